// A system that has no thread to give.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

// As long as the object lives, this process cannot start threads: none has room for its stack.
class NoThreads {
  public:
    NoThreads() {
        pthread_attr_t tooLarge;
        EXPECT_EQ(pthread_getattr_default_np(&mUsual), 0);
        EXPECT_EQ(pthread_attr_init(&tooLarge), 0);
        EXPECT_EQ(pthread_attr_setstacksize(&tooLarge, size_t{1} << 50), 0);
        EXPECT_EQ(pthread_setattr_default_np(&tooLarge), 0);
        pthread_attr_destroy(&tooLarge);
    }
    ~NoThreads() {
        EXPECT_EQ(pthread_setattr_default_np(&mUsual), 0);
        pthread_attr_destroy(&mUsual);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

  private:
    pthread_attr_t mUsual;
};
