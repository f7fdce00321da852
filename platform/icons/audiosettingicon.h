#pragma once

// libaudiosettingicon holds the pictures of the unit as Qt resources; loading the library registers them,
// unloading it takes them away. icons.txt lists them with their sizes. There is nothing to call: link the
// library (its CMake target keeps it linked) and name a picture by its path, for example
// QPixmap(":/vexa_m5qx_settingicon_ext/locator.png"). Each picture also exists at twice its size under Qt's
// "@2x" name, which Qt takes by itself on a screen of that density.

#if defined(__GNUC__)
#define AUDIOSETTINGICON_EXPORT __attribute__((visibility("default")))
#else
#define AUDIOSETTINGICON_EXPORT
#endif

/// Version of the picture set as "major.minor.patch": a constant string that the library owns, valid while it
/// is loaded. Any thread.
extern "C" AUDIOSETTINGICON_EXPORT const char* audiosettingicon_version();
