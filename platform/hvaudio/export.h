#pragma once

/// Marks what a host of the sound processor may call. All else is hidden in the library.
#define HVAUDIO_EXPORT __attribute__((visibility("default")))
