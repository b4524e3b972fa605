// What the compiler is told beyond the language: which names leave the
// library, and which lock guards what.
#pragma once

#if defined(__GNUC__)
#define VKMIBH_API __attribute__((visibility("default")))
#define VKMIBH_LOCAL __attribute__((visibility("hidden")))
#else
#define VKMIBH_API
#define VKMIBH_LOCAL
#endif

// clang's thread-safety annotations; nothing with other compilers.
#if defined(__clang__)
#define VKMIBH_TSA(x) __attribute__((x))
#else
#define VKMIBH_TSA(x)
#endif
