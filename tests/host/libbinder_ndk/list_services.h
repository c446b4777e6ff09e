// The services that the service manager, or this process without one, tells of.
#pragma once

#include <android/binder_status.h>
#include <gtest/gtest.h>
#include <host_service_manager.h>

#include <string>
#include <vector>

inline std::vector<std::string> listServices() {
    std::vector<std::string> names;
    const auto collect = [](const char* name, void* context) {
        static_cast<std::vector<std::string>*>(context)->push_back(name);
    };
    EXPECT_EQ(AServiceManager_forEachService(&names, collect), STATUS_OK);
    return names;
}
