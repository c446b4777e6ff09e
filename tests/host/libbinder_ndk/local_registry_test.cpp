// Services by name inside one process.
#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>

#include <thread>

#include "tests/host/libbinder_ndk/list_services.h"
#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

ndk::SpAIBinder newService() {
    static AIBinder_Class* const clazz = newPlainClass("test.IService");
    return ndk::SpAIBinder(AIBinder_new(clazz, nullptr));
}

ndk::SpAIBinder check(const char* name) {
    return ndk::SpAIBinder(AServiceManager_checkService(name));
}

TEST(LocalRegistry, KeepsServicesByName) {
    ndk::SpAIBinder first = newService();
    ndk::SpAIBinder second = newService();
    EXPECT_EQ(check("test.IService/a").get(), nullptr);
    EXPECT_EQ(AServiceManager_addService(first.get(), "test.IService/a"), EX_NONE);
    EXPECT_EQ(check("test.IService/a"), first);
    EXPECT_TRUE(AServiceManager_isDeclared("test.IService/a"));
    EXPECT_EQ(AServiceManager_addService(second.get(), "test.IService/a"), EX_NONE);
    EXPECT_EQ(check("test.IService/a"), second) << "the later one replaces";
    EXPECT_EQ(AIBinder_debugGetRefCount(first.get()), 1);
    ASSERT_EQ(AServiceManager_addService(first.get(), "test.IOther/b"), EX_NONE);
    EXPECT_THAT(listServices(), testing::IsSupersetOf({"test.IService/a", "test.IOther/b"}));
}

TEST(LocalRegistry, RefusesBadNamesAndNull) {
    ndk::SpAIBinder service = newService();
    EXPECT_EQ(AServiceManager_addService(nullptr, "x"), EX_ILLEGAL_ARGUMENT);
    for (const std::string& name : {std::string(), std::string(128, 'a'), std::string("a b"),
                                    std::string("a:b"), std::string("\xc3\xa9")}) {
        EXPECT_EQ(AServiceManager_addService(service.get(), name.c_str()), EX_ILLEGAL_ARGUMENT)
                << name;
    }
    EXPECT_EQ(AServiceManager_addService(service.get(), nullptr), EX_ILLEGAL_ARGUMENT);
    EXPECT_EQ(AServiceManager_addService(service.get(), std::string(127, 'a').c_str()), EX_NONE);
    EXPECT_EQ(check(nullptr).get(), nullptr);
}

TEST(LocalRegistry, WaitsForAServiceThatComes) {
    ndk::SpAIBinder service = newService();
    std::thread adder([&]() {
        EXPECT_EQ(AServiceManager_addService(service.get(), "test.IService/late"), EX_NONE);
    });
    EXPECT_EQ(ndk::SpAIBinder(AServiceManager_waitForService("test.IService/late")), service);
    adder.join();
}

}  // namespace
