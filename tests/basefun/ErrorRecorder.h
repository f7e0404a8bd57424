#pragma once

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "platform/Window.h"

#include <string>
#include <vector>

/// Puts an older error into m_strLastError, so that any change of it shows, and listens as a connection's window.
class ErrorRecorder {
public:
    static constexpr const char* kOlder = "an older error";
    static constexpr UINT kMessage = 1234;

    struct Message {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
        std::string text; // m_strLastError during the call
    };

    ErrorRecorder()
        : m_window(CreateMessageWindow([this](UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
              messages.push_back({message, wParam, lParam, Text()});
              return 0;
          }))
    {
        CQVBaseFun::m_strLastError = kOlder;
    }
    ErrorRecorder(const ErrorRecorder&) = delete;
    ErrorRecorder& operator=(const ErrorRecorder&) = delete;
    ~ErrorRecorder() { DestroyMessageWindow(m_window); }

    void ListenTo(CAConnect& conn) const
    {
        conn.m_hNotifyWnd = m_window;
        conn.m_nNotifyMsg = kMessage;
    }

    [[nodiscard]] static std::string Text() { return std::string(CQVBaseFun::m_strLastError.View()); }

    std::vector<Message> messages;

private:
    HWND m_window;
};
