#pragma once

/// \file
/// The macros that declarations of the public headers bear.

/// Marks what the shared library exports. Everything else is built with hidden visibility.
#define KRUTEIN_API __attribute__((visibility("default")))

/// Lets the compiler check a printf-like function: `format` is the 1-based number of the format argument,
/// `first` that of the first value (0 for a va_list). Members count `this` as the first argument.
#define KRUTEIN_PRINTF(format_, first_) __attribute__((format(printf, format_, first_)))
