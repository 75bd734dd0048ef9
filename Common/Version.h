#pragma once

/// \file
/// The version of the library that a host is compiled against.

/// \{
/// The version's three numbers. They stand in this one place: the build reads these lines too.
#define KRUTEIN_VERSION_MAJOR 1
#define KRUTEIN_VERSION_MINOR 0
#define KRUTEIN_VERSION_PATCH 0
/// \}

/// \{
/// The value of a macro as text.
#define KRUTEIN_TEXT_OF_(x) #x
#define KRUTEIN_TEXT_OF(x) KRUTEIN_TEXT_OF_(x)
/// \}

/// The version as text, for example "1.0.0".
#define KRUTEIN_VERSION                    \
    KRUTEIN_TEXT_OF(KRUTEIN_VERSION_MAJOR) \
    "." KRUTEIN_TEXT_OF(KRUTEIN_VERSION_MINOR) "." KRUTEIN_TEXT_OF(KRUTEIN_VERSION_PATCH)
