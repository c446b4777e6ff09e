// What a binder round trip between two processes costs, beside a bare Unix socket, all on one core,
// and how long a dead peer stays unnoticed.
#include <android/binder_manager.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_process.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "child.h"
#include "device.h"
#include "measure.h"
#include "table.h"

namespace {

constexpr int kRounds = 15;
constexpr int kCallsPerRound = 500;
constexpr transaction_code_t kEcho = FIRST_CALL_TRANSACTION;

void Require(bool done, const char* what) {
    if (done) return;
    fprintf(stderr, "binder_bench: cannot %s\n", what);
    exit(1);
}

void StayOnOneCore() {
    cpu_set_t allowed;
    Require(sched_getaffinity(0, sizeof(allowed), &allowed) == 0, "ask for the cores");
    int core = 0;
    while (!CPU_ISSET(core, &allowed)) ++core;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(core, &one);
    Require(sched_setaffinity(0, sizeof(one), &one) == 0, "stay on one core");
}

binder_status_t OnTransact(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    if (code != kEcho) return STATUS_UNKNOWN_TRANSACTION;
    std::vector<uint8_t> bytes;
    const binder_status_t status = ndk::AParcel_readVector(in, &bytes);
    return status == STATUS_OK ? ndk::AParcel_writeVector(out, bytes) : status;
}

const AIBinder_Class* EchoClass() {
    static const AIBinder_Class* const echoClass = AIBinder_Class_define(
            "bench.IEcho", [](void* args) { return args; }, [](void*) {}, OnTransact);
    return echoClass;
}

[[noreturn]] void Serve(const char* name) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const ndk::SpAIBinder object(AIBinder_new(EchoClass(), nullptr));
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    Require(AServiceManager_addService(object.get(), name) == EX_NONE, "register");
    ABinderProcess_joinThreadPool();
    exit(1);
}

struct Peer {
    pid_t process;
    ndk::SpAIBinder binder;
};

Peer StartPeer() {
    static int count = 0;
    const std::string name = "bench.echo" + std::to_string(++count);
    const pid_t process = bench::Start({"/proc/self/exe", name}, STDERR_FILENO);
    Peer peer{process, ndk::SpAIBinder(AServiceManager_waitForService(name.c_str()))};
    Require(AIBinder_associateClass(peer.binder.get(), EchoClass()), "find the peer");
    return peer;
}

void EndPeer(pid_t process) {
    kill(process, SIGKILL);
    bench::WaitFor(process);
}

void CallEcho(AIBinder* binder, const std::vector<uint8_t>& bytes) {
    AParcel* in = nullptr;
    AParcel* out = nullptr;
    std::vector<uint8_t> answer;
    Require(AIBinder_prepareTransaction(binder, &in) == STATUS_OK &&
                    ndk::AParcel_writeVector(in, bytes) == STATUS_OK &&
                    AIBinder_transact(binder, kEcho, &in, &out, 0) == STATUS_OK &&
                    ndk::AParcel_readVector(out, &answer) == STATUS_OK && answer == bytes,
            "call the peer");
    AParcel_delete(out);
}

/** A process that sends back whatever comes through a socket; it ends with the other end. */
class SocketEcho {
  public:
    explicit SocketEcho(size_t bytes) : mBytes(bytes) {
        int ends[2];
        Require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "make sockets");
        mProcess = fork();
        Require(mProcess >= 0, "fork");
        if (mProcess == 0) {
            close(ends[0]);
            while (Receive(ends[1])) Send(ends[1]);
            _exit(0);
        }
        close(ends[1]);
        mEnd = ends[0];
    }
    ~SocketEcho() {
        close(mEnd);
        bench::WaitFor(mProcess);
    }
    void Call() { Require(Send(mEnd) && Receive(mEnd), "reach the other end of a socket"); }

  private:
    bool Send(int end) {
        return send(end, mBytes.data(), mBytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(mBytes.size());
    }
    bool Receive(int end) {
        return recv(end, mBytes.data(), mBytes.size(), MSG_WAITALL) ==
               static_cast<ssize_t>(mBytes.size());
    }

    std::vector<uint8_t> mBytes;
    pid_t mProcess = -1;
    int mEnd = -1;
};

void RoundTrips(size_t size) {
    SocketEcho socket(size);
    const Peer peer = StartPeer();
    const std::vector<uint8_t> bytes(size, 7);
    const std::vector<bench::Subject> subjects = {
            {"bare socket",
             [&] {
                 for (int i = 0; i < kCallsPerRound; ++i) socket.Call();
             }},
            {"binder call",
             [&] {
                 for (int i = 0; i < kCallsPerRound; ++i) CallEcho(peer.binder.get(), bytes);
             }},
    };
    std::vector<double> times = MedianTimes(subjects, kRounds);
    for (double& time : times) time /= kCallsPerRound;
    bench::PrintComparison("A round trip of " + std::to_string(size) + " bytes each way", subjects,
                           times, 0, {0, 4});
    EndPeer(peer.process);
}

struct DeathNotice {
    std::mutex lock;
    std::condition_variable changed;
    double told = 0;

    void Tell() {
        std::lock_guard<std::mutex> guard(lock);
        told = bench::Now();
        changed.notify_all();
    }
    double Await() {
        std::unique_lock<std::mutex> guard(lock);
        const bool came = changed.wait_for(guard, std::chrono::seconds(10), [&] { return told; });
        Require(came, "learn of a peer's death");
        return told;
    }
};

void Deaths() {
    AIBinder_DeathRecipient* const recipient = AIBinder_DeathRecipient_new(
            [](void* notice) { static_cast<DeathNotice*>(notice)->Tell(); });
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        Peer peer = StartPeer();
        DeathNotice notice;
        Require(AIBinder_linkToDeath(peer.binder.get(), recipient, &notice) == STATUS_OK, "link");
        const double start = bench::Now();
        kill(peer.process, SIGKILL);
        times.push_back(notice.Await() - start);
        bench::WaitFor(peer.process);
    }
    bench::PrintMilliseconds("A peer that is killed", "until its death is told",
                             bench::Median(times), 5);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) Serve(argv[1]);
    StayOnOneCore();
    bench::GoIntoDevice();
    printf("## Binder, all processes on one core\n\n");
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    RoundTrips(64);
    RoundTrips(4096);
    Deaths();
}
