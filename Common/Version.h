#pragma once

// The one place that says the version: the build reads these three lines too.
#define KRUTEIN_VERSION_MAJOR 1
#define KRUTEIN_VERSION_MINOR 0
#define KRUTEIN_VERSION_PATCH 0

#define KRUTEIN_TEXT_OF_(x) #x
#define KRUTEIN_TEXT_OF(x) KRUTEIN_TEXT_OF_(x)

/// The version as text, for example "1.0.0".
#define KRUTEIN_VERSION                    \
    KRUTEIN_TEXT_OF(KRUTEIN_VERSION_MAJOR) \
    "." KRUTEIN_TEXT_OF(KRUTEIN_VERSION_MINOR) "." KRUTEIN_TEXT_OF(KRUTEIN_VERSION_PATCH)
