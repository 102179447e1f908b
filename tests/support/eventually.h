// Waiting for what real threads do: a condition polled until it holds or a generous limit passes.
#pragma once

#include <chrono>
#include <thread>

namespace helmbridge::testing {

// Generous, because a loaded machine, a sanitizer or Wine can be slow by seconds; a test that
// passes waits only as long as the condition takes.
inline constexpr std::chrono::seconds kEventuallyTimeout{30};

template <typename Condition>
bool eventually(Condition&& condition,
                std::chrono::steady_clock::duration timeout = kEventuallyTimeout) {
    const auto until = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace helmbridge::testing
