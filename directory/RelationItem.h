#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"

class CAConnect;

/// One row of qv_Relation: a link from a holder item to a dependent item, each named by id and type (1 user, 2 group,
/// 3 role, 4 view). Relation type 1 is membership.
///
/// A plain value. Errors leave their text in CQVBaseFun::m_strLastError; none is notified.
class QV_API CRelationItem : public CObject {
public:
    /// All numbers 0, relation type 1.
    CRelationItem();
    ~CRelationItem() override;

    /// Adds this link; nothing keeps an equal one from being there already.
    /// @return 1, or 0 when the connection is not open or the engine refused.
    int SaveData(CAConnect& conn);
    /// Deletes every row that is equal in all but the view id, the reference value included. @return 1,
    /// also when there was none; 0 when the connection is not open or the engine refused.
    int DelData(CAConnect& conn);

    int m_nQvItemID = 0;    ///< the holder's id
    int m_nQvItemType = 0;  ///< the holder's type
    int m_nDQvItemID = 0;   ///< the dependent's id
    int m_nDQvItemType = 0; ///< the dependent's type
    int m_nRelType = 1;     ///< the kind of relation; 1 is membership
    int m_nRef = 0;         ///< a number for callers; DelData compares it
    int m_nViewID = 0;      ///< the view to which a user's link belongs (CQVBaseFun::UpdateRelationViewID); 0 for none
};
