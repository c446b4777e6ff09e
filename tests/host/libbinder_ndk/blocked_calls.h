// Calls that stay in a peer until the test lets them go.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <future>
#include <vector>

#include "tests/host/libbinder_ndk/peer_service.h"

class BlockedCalls {
  public:
    explicit BlockedCalls(const ndk::SpAIBinder& peer) : mPeer(peer) {
        EXPECT_EQ(pipe2(mEntered, O_CLOEXEC), 0);
        EXPECT_EQ(pipe2(mGo, O_CLOEXEC), 0);
    }
    ~BlockedCalls() {
        for (int* ends : {mEntered, mGo}) {
            close(ends[0]);
            close(ends[1]);
        }
    }
    binder_status_t call(binder_flags_t flags) {
        const auto write = [this](AParcel* in) {
            AParcel_writeParcelFileDescriptor(in, mEntered[1]);
            return AParcel_writeParcelFileDescriptor(in, mGo[0]);
        };
        return callPeer(mPeer, kBlock, write, nullptr, flags);
    }
    void start() {
        mCalls.push_back(std::async(std::launch::async, [this]() { return call(0); }));
    }
    void awaitEntered(int count) {
        char byte;
        for (int i = 0; i < count; ++i) ASSERT_EQ(read(mEntered[0], &byte, 1), 1);
    }
    // Gives calls that should not run a chance to show.
    void expectNoMoreEntered() {
        pollfd entered{mEntered[0], POLLIN, 0};
        EXPECT_EQ(poll(&entered, 1, 100), 0);
    }
    void letGo() { ASSERT_EQ(write(mGo[1], "x", 1), 1); }
    void expectAllDone(binder_status_t status = STATUS_OK) {
        for (auto& call : mCalls) EXPECT_EQ(call.get(), status);
    }

  private:
    const ndk::SpAIBinder mPeer;
    int mEntered[2] = {-1, -1};
    int mGo[2] = {-1, -1};
    std::vector<std::future<binder_status_t>> mCalls;
};
