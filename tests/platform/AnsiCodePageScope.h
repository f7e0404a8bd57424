#pragma once

#include "platform/CodePage.h"

#include <gtest/gtest.h>

/// Sets the ANSI code page for one scope.
class AnsiCodePageScope {
public:
    explicit AnsiCodePageScope(UINT codePage) : m_before(GetACP()) { EXPECT_TRUE(SetAnsiCodePage(codePage)); }
    AnsiCodePageScope(const AnsiCodePageScope&) = delete;
    AnsiCodePageScope& operator=(const AnsiCodePageScope&) = delete;
    ~AnsiCodePageScope() { SetAnsiCodePage(m_before); }

private:
    UINT m_before;
};
