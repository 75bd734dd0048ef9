#pragma once

#include <cstdint>

namespace krutein {

/// Things that go to groups in turn, as messages to chats: what is in a group is known without a list. All
/// count from 0.
struct Turns {
    std::int64_t things;
    std::int64_t groups;

    std::int64_t GroupOf(std::int64_t thing) const { return thing % groups; }
    std::int64_t CountIn(std::int64_t group) const {
        return things / groups + (group < things % groups ? 1 : 0);
    }
    /// The one that comes at this place in its group.
    std::int64_t ThingIn(std::int64_t group, std::int64_t place) const { return place * groups + group; }
};

}  // namespace krutein
