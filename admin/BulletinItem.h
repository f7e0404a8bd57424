#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/CString.h"
#include "platform/CStringArray.h"

/// One notice of the bulletin board, for callers to fill: no operation does. Texts and list are empty at first.
class QV_API CBulletinItem : public CObject {
public:
    CBulletinItem();
    ~CBulletinItem() override;

    CString m_strID;            ///< the notice's id, any text
    CString m_strSubject;       ///< its subject
    CString m_strCreatorName;   ///< who wrote it
    CString m_strTime;          ///< when, as CQVBaseFun::LoadBulletinInfo gives it
    CString m_strContent;       ///< its text
    CStringArray m_attachments; ///< file names
};
