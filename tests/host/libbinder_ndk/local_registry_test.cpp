// Services by name inside one process.
#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <host_service_manager.h>

#include <string>
#include <thread>
#include <vector>

namespace {

ndk::SpAIBinder newService() {
    static AIBinder_Class* const clazz = AIBinder_Class_define(
            "test.IService", [](void*) -> void* { return nullptr; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_OK;
            });
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

TEST(LocalRegistry, ListsInstancesOfAnInterface) {
    ndk::SpAIBinder service = newService();
    for (const char* name : {"test.IList/one", "test.IList/two", "test.IListOther/three"}) {
        ASSERT_EQ(AServiceManager_addService(service.get(), name), EX_NONE);
    }
    std::vector<std::string> names;
    auto collect = [](const char* name, void* context) {
        static_cast<std::vector<std::string>*>(context)->push_back(name);
    };
    AServiceManager_forEachDeclaredInstance("test.IList", &names, collect);
    EXPECT_EQ(names, (std::vector<std::string>{"one", "two"}));
    names.clear();
    EXPECT_EQ(AServiceManager_forEachService(&names, collect), STATUS_OK);
    EXPECT_THAT(names, testing::Contains("test.IListOther/three"));
}

}  // namespace
