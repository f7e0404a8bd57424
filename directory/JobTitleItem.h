#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/CString.h"

class CAConnect;

/// One row of qv_JobTitle: the position that a member, by default a user, holds inside a holder, by default a group.
/// The member's name is a copy that is not kept in step.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest.
class QV_API CJobTitleItem : public CObject {
public:
    /// Texts empty, ids 0, holder type 2 (group), member type 1 (user).
    CJobTitleItem();
    ~CJobTitleItem() override;

    /// Adds this title; nothing keeps an equal row from being there already (CQVBaseFun::ExistJobTitle tells).
    /// @return whether nothing was raised; an error's text is dropped.
    bool SaveData(CAConnect& conn);

    int m_nQvItemID = 0;      ///< the holder's id
    int m_nQvItemType = 2;    ///< the holder's type
    CString m_strJobTitle;    ///< not escaped
    int m_nDQvItemID = 0;     ///< the member's id
    int m_nDQvItemType = 1;   ///< the member's type
    CString m_strDescription; ///< not escaped
    CString m_strDQvItemName; ///< not escaped; the member's name when the title was given
};
