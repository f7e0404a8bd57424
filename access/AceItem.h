#pragma once

#include "platform/CObject.h"
#include "platform/CString.h"

class CAConnect;

/// One row of qv_ItemAce. A plain value of the module's own; the way to add a right is CQVBaseFun::InsertItemAce.
class CAceItem : public CObject {
public:
    CAceItem();
    ~CAceItem() override;

    /// Sends its statement without the last parenthesis, which an engine refuses: the text is kept as it stands.
    /// @return whether nothing was raised; an error's text is dropped.
    bool SaveData(CAConnect& conn);

    int m_nQvItemID = 0;
    int m_nQvItemType = 0;
    CString m_strFunGenre; ///< not escaped
    CString m_strFunName;  ///< not escaped
    int m_nPower = 0;
    int m_nUnPower = 0;
};
