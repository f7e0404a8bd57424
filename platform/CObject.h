#pragma once

#include "platform/Api.h"

class CArchive;
class CDumpContext;

/// Run-time class information: here only a name.
struct CRuntimeClass {
    /// The name of the class, a static text.
    const char* m_lpszClassName;
};

/// Root of the framework's classes. The order of the virtual functions is part of the binary interface.
class QV_API CObject {
public:
    /// Has no state.
    CObject() = default;
    /// The class information "CObject", static; derived classes may give their own.
    [[nodiscard]] virtual CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject();
    /// Does nothing.
    virtual void Serialize(CArchive& archive);
    /// Does nothing.
    virtual void AssertValid() const;
    /// Does nothing.
    virtual void Dump(CDumpContext& context) const;

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;
};
