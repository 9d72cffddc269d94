#pragma once

// Marks a function of the library's public surface: plain C linkage, undecorated, visible.
#if defined(__cplusplus)
#define TESSARIN_LINKAGE extern "C"
#else
#define TESSARIN_LINKAGE
#endif

#if defined(_WIN32)
#if defined(TESSARIN_BUILDING)
#define TESSARIN_API TESSARIN_LINKAGE __declspec(dllexport)
#else
#define TESSARIN_API TESSARIN_LINKAGE __declspec(dllimport)
#endif
#else
#define TESSARIN_API TESSARIN_LINKAGE __attribute__((visibility("default")))
#endif
