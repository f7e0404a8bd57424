#pragma once

/// @file
/// Message windows, which receive notifications.

#include "platform/Api.h"
#include "platform/WindowsTypes.h"

#include <functional>

/// What a window does with a message; runs on the thread that made the window.
using MessageHandler = std::function<LRESULT(UINT message, WPARAM wParam, LPARAM lParam)>;

/// Makes a message window that belongs to the calling thread; its messages are handled on that thread only.
/// Windows that are left when their thread ends are destroyed then.
/// @return null when the thread is already that far.
QV_API HWND CreateMessageWindow(MessageHandler handler);
/// Destroys a window of the calling thread. Senders that wait for it get 0.
/// @return false for a window that does not exist or belongs to another thread.
QV_API bool DestroyMessageWindow(HWND window);

// On Windows the system has it.
#if !defined(_WIN32)
/// Delivers a message and waits for the answer. On the owner's thread the handler runs at once; from another thread the
/// call waits until the owner pumps its messages, and meanwhile handles what is sent to windows of the calling thread,
/// so that two threads may send to each other.
/// An exception that the handler throws comes out of this call, on either way.
/// @return the handler's answer, 0 when there is no such window (any more).
QV_API LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
#endif

/// Handles the messages that other threads have sent, before this call, to windows of this thread and are waiting for.
/// @return how many.
QV_API int PumpMessages();
