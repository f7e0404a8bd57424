#pragma once

/// @file
/// Message windows, which receive notifications.

#include "platform/Api.h"

#include <cstdint>
#include <functional>

/// A 32-bit number without a sign.
using UINT = unsigned int;
/// The first argument of a message, as wide as a pointer.
using WPARAM = std::uintptr_t;
/// The second argument of a message, as wide as a pointer.
using LPARAM = std::intptr_t;
/// The answer to a message, as wide as a pointer.
using LRESULT = std::intptr_t;

/// Never defined: window handles point to nothing.
struct QvWindow;
/// A message window; null is no window. Names a window, points to nothing; no two windows ever have the same.
using HWND = QvWindow*;

/// What a window does with a message; runs on the thread that made the window.
using MessageHandler = std::function<LRESULT(UINT message, WPARAM wParam, LPARAM lParam)>;

/// Makes a message window that belongs to the calling thread; its messages are handled on that thread only.
/// Windows that are left when their thread ends are destroyed then.
/// @return null when the thread is already that far.
QV_API HWND CreateMessageWindow(MessageHandler handler);
/// Destroys a window of the calling thread. Senders that wait for it get 0.
/// @return false for a window that does not exist or belongs to another thread.
QV_API bool DestroyMessageWindow(HWND window);

/// Delivers a message and waits for the answer. On the owner's thread the handler runs at once; from another thread the
/// call waits until the owner pumps its messages, and meanwhile handles what is sent to windows of the calling thread,
/// so that two threads may send to each other.
/// An exception that the handler throws comes out of this call, on either way.
/// @return the handler's answer, 0 when there is no such window (any more).
QV_API LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Handles the messages that other threads have sent, before this call, to windows of this thread and are waiting for.
/// @return how many.
QV_API int PumpMessages();
