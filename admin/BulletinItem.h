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

    CString m_strID;
    CString m_strSubject;
    CString m_strCreatorName;
    CString m_strTime;
    CString m_strContent;
    CStringArray m_attachments;
};
