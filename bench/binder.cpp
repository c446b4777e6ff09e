// What a binder round trip between two processes costs, beside a bare Unix socket, all on one core,
// and how long a peer's death goes unnoticed.
#include <android/binder_manager.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_process.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <future>

#include "bench.h"

namespace bench {
namespace {

constexpr int kCallsPerRound = 500;
constexpr transaction_code_t kEcho = FIRST_CALL_TRANSACTION;

void StayOnOneCore() {
    cpu_set_t cores, one;
    Require(sched_getaffinity(0, sizeof(cores), &cores) == 0, "ask for the cores");
    int core = 0;
    while (!CPU_ISSET(core, &cores)) ++core;
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

struct Peer {
    pid_t process;
    ndk::SpAIBinder binder;
};

Peer StartPeer() {
    static int count = 0;
    const std::string name = "bench.echo" + std::to_string(++count);
    const pid_t process = Start({"/proc/self/exe", "--echo", name}, STDERR_FILENO);
    Peer peer{process, ndk::SpAIBinder(AServiceManager_waitForService(name.c_str()))};
    Require(AIBinder_associateClass(peer.binder.get(), EchoClass()), "find the peer");
    return peer;
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

bool Send(int end, const std::vector<uint8_t>& bytes) {
    return send(end, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
}

bool Receive(int end, std::vector<uint8_t>* bytes) {
    return recv(end, bytes->data(), bytes->size(), MSG_WAITALL) ==
           static_cast<ssize_t>(bytes->size());
}

void RoundTrips(size_t size) {
    int ends[2];
    Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "make sockets");
    const pid_t echo = fork();
    Require(echo >= 0, "fork");
    std::vector<uint8_t> bytes(size, 7), answer(size);
    if (echo == 0) {
        close(ends[0]);
        while (Receive(ends[1], &bytes) && Send(ends[1], bytes)) continue;
        _exit(0);
    }
    close(ends[1]);
    const Peer peer = StartPeer();
    const auto repeat = [](const std::function<void()>& call) {
        return [call] {
            for (int i = 0; i < kCallsPerRound; ++i) call();
        };
    };
    const double each = 1.0 / kCallsPerRound;
    Compare("A round trip of " + std::to_string(size) + " bytes each way",
            {{"bare socket",
              repeat([&] {
                  Require(Send(ends[0], bytes) && Receive(ends[0], &answer), "reach the socket");
              }),
              {},
              0,
              each},
             {"binder call", repeat([&] { CallEcho(peer.binder.get(), bytes); }), {}, 4, each}});
    close(ends[0]);
    WaitFor(echo);
    kill(peer.process, SIGKILL);
    WaitFor(peer.process);
}

void Deaths() {
    using Told = std::promise<double>;  // when
    AIBinder_DeathRecipient* const recipient = AIBinder_DeathRecipient_new(
            [](void* told) { static_cast<Told*>(told)->set_value(Now()); });
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        const Peer peer = StartPeer();
        Told told;
        std::future<double> time = told.get_future();
        Require(AIBinder_linkToDeath(peer.binder.get(), recipient, &told) == STATUS_OK, "link");
        const double start = Now();
        kill(peer.process, SIGKILL);
        Require(time.wait_for(std::chrono::seconds(10)) == std::future_status::ready,
                "learn of a peer's death within 10 s");
        times.push_back(time.get() - start);
        WaitFor(peer.process);
    }
    PrintTimes("A peer that is killed",
               {{"the most that it may take", {}}, {"until its death is told", {}, {}, 1}},
               {5, Median(times)});
}

}  // namespace

void ServeEcho(const char* name) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const ndk::SpAIBinder object(AIBinder_new(EchoClass(), nullptr));
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    Require(AServiceManager_addService(object.get(), name) == EX_NONE, "register");
    ABinderProcess_joinThreadPool();
    exit(1);
}

void MeasureBinder() {
    StayOnOneCore();
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    RoundTrips(64);
    RoundTrips(4096);
    Deaths();
}

}  // namespace bench
