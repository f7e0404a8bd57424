#pragma once

#include "documents/DocLink.h"
#include "platform/Api.h"
#include "platform/CObject.h"

class CAConnect;

/// One row of Tab_Doc_VFolder_Link: an object under a folder.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest.
class QV_API CDocFolderLinkItem : public CObject, public DocLink {
public:
    /// All texts empty, all numbers 0.
    CDocFolderLinkItem();
    ~CDocFolderLinkItem() override;

    /// Adds this link; nothing keeps an equal one from being there already. The new id is not read back.
    /// @return whether nothing was raised; an error's text is dropped.
    bool SaveData(CAConnect& conn);
};
