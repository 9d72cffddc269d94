#pragma once

// Marks a function of the library's public surface: plain C linkage, undecorated, visible.
#if defined(_WIN32)
#if defined(TESSARIN_BUILDING)
#define TESSARIN_API extern "C" __declspec(dllexport)
#else
#define TESSARIN_API extern "C" __declspec(dllimport)
#endif
#else
#define TESSARIN_API extern "C" __attribute__((visibility("default")))
#endif
