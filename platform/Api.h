#pragma once

// Marks what a library shows to its users; everything else stays inside (the libraries are built with hidden
// visibility).
#if defined(_WIN32)
#if defined(QV_BUILDING_LIBRARY)
#define QV_API __declspec(dllexport)
#else
#define QV_API __declspec(dllimport)
#endif
#else
#define QV_API __attribute__((visibility("default")))
#endif
