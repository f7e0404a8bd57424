#include "admin/BulletinItem.h"

CBulletinItem::CBulletinItem() = default;

CBulletinItem::~CBulletinItem() = default;
