// Marks what the shared library shows to hosts; all else stays inside it.
#pragma once

#if defined(__GNUC__)
#define VORLENT_PUBLIC __attribute__((visibility("default")))
#else
#define VORLENT_PUBLIC
#endif
