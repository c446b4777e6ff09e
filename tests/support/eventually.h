// Waiting for what another thread or process brings about.
#pragma once

#include <time.h>

#include <chrono>
#include <functional>

// Asks until `condition` holds; false if it does not within 20 s.
inline bool Eventually(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit) return false;
        const timespec pause{0, 1000000};
        nanosleep(&pause, nullptr);
    }
    return true;
}
