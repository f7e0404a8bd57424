#pragma once

#include "documents/DocLink.h"
#include "platform/Api.h"
#include "platform/CObject.h"

class CAConnect;

/// One row of Tab_Doc_Root_Link: an object directly under a document root.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest.
class QV_API CDocRootLinkItem : public CObject, public DocLink {
public:
    /// All texts empty, all numbers 0.
    CDocRootLinkItem();
    ~CDocRootLinkItem() override;

    /// Adds this link; nothing keeps an equal one from being there already. The new id is not read back.
    /// @return whether nothing was raised; an error's text is dropped.
    bool SaveData(CAConnect& conn);
};
