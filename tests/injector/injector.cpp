// Which call fails: read once, counted under one lock.
#include "injector.h"

#include <android/log.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <iterator>
#include <map>
#include <mutex>

namespace injector {

namespace {

constexpr const char* kKindNames[] = {"",
                                      "dead-object",
                                      "failed-transaction",
                                      "exception",
                                      "service-specific",
                                      "lost-reply",
                                      "class",
                                      "library",
                                      "mapper-error",
                                      "mapper-transport",
                                      "plane-layout",
                                      "mapping",
                                      "descriptor"};

struct Order {
    Kind kind = Kind::kNone;
    unsigned long number = 0;
};

Order readOrder() {
    const char* const text = getenv("STANDIN_INJECT");
    if (text == nullptr) return {};
    const char* const colon = strchr(text, ':');
    for (size_t i = 1; colon != nullptr && i < std::size(kKindNames); ++i) {
        if (std::string(text, colon) != kKindNames[i]) continue;
        char* end = nullptr;
        const unsigned long number = strtoul(colon + 1, &end, 10);
        if (number > 0 && *end == '\0') return {static_cast<Kind>(i), number};
    }
    fprintf(stderr, "STANDIN_INJECT=%s: not KIND:N, see tests/injector/injector.h\n", text);
    _exit(2);
}

const Order& order() {
    static const Order order = readOrder();
    return order;
}

// Never destroyed: calls are made until the process ends.
struct Counts {
    std::mutex mutex;
    unsigned long all = 0;
    std::map<std::string, int> byName;
};

Counts& counts() {
    static Counts* const counts = new Counts;
    return *counts;
}

}  // namespace

Kind kind() {
    return order().kind;
}

bool fails(Kind kind, const std::string& function, const std::string& subject) {
    if (kind == Kind::kNone || kind != order().kind) return false;
    const std::string name = subject.empty() ? function : function + " " + subject;
    int ofThisName = 0;
    {
        std::lock_guard<std::mutex> lock(counts().mutex);
        ofThisName = ++counts().byName[name];
        if (++counts().all != order().number) return false;
    }
    __android_log_print(ANDROID_LOG_INFO, "Injector", "call %lu fails: %s #%d", order().number,
                        name.c_str(), ofThisName);
    return true;
}

}  // namespace injector
