// Which process this is, and what it has from its parent.
#pragma once

#include <cstdint>
#include <memory>

namespace ormel::client {

// Another one in each child of a fork; asking for it is no call of the system.
uint64_t processNumber() noexcept;

// Lets go of what a child inherited, as it is: it is the parent's, and neither used nor closed. It stays reachable.
void leaveInherited(void *object) noexcept;

template <class T> void leaveInherited(std::unique_ptr<T> inherited) noexcept {
    leaveInherited(static_cast<void *>(inherited.release()));
}

} // namespace ormel::client
