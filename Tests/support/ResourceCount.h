#pragma once

#include <iosfwd>

/// What this process holds. Compared before and after, to show that nothing stays behind.
struct ResourceCount {
    int descriptors = 0;
    int threads = 0;
    int children = 0;  ///< running or not waited for

    static ResourceCount Now();
};

bool operator==(const ResourceCount& a, const ResourceCount& b);
std::ostream& operator<<(std::ostream& out, const ResourceCount& count);

/// Waits up to ten seconds, for threads and background tasks that are about to end, until the counts are
/// these again. \return the counts at the end.
ResourceCount AwaitResources(const ResourceCount& wanted);
