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

#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include "device.h"
#include "groups.h"
#include "measure.h"

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
    const pid_t process = Start({"/proc/self/exe", name}, STDERR_FILENO);
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

// Sends and receives whole blocks at one end of a socket.
class SocketEnd {
  public:
    SocketEnd(int end, size_t bytes) : m_end(end), m_bytes(bytes) {}
    bool Send() {
        return send(m_end, m_bytes.data(), m_bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(m_bytes.size());
    }
    bool Receive() {
        return recv(m_end, m_bytes.data(), m_bytes.size(), MSG_WAITALL) ==
               static_cast<ssize_t>(m_bytes.size());
    }

  private:
    const int m_end;
    std::vector<uint8_t> m_bytes;
};

void RoundTrips(size_t size) {
    int ends[2];
    Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "make sockets");
    const pid_t echo = fork();
    Require(echo >= 0, "fork");
    if (echo == 0) {
        close(ends[0]);
        SocketEnd socket(ends[1], size);
        while (socket.Receive() && socket.Send()) continue;
        _exit(0);
    }
    close(ends[1]);
    SocketEnd socket(ends[0], size);
    const Peer peer = StartPeer();
    const std::vector<uint8_t> bytes(size, 7);
    const auto repeat = [](const std::function<void()>& call) {
        return [call] {
            for (int i = 0; i < kCallsPerRound; ++i) call();
        };
    };
    const double each = 1.0 / kCallsPerRound;
    Compare("A round trip of " + std::to_string(size) + " bytes each way",
            {{"bare socket",
              repeat([&] { Require(socket.Send() && socket.Receive(), "reach the socket"); }),
              {},
              0,
              each},
             {"binder call", repeat([&] { CallEcho(peer.binder.get(), bytes); }), {}, 4, each}});
    close(ends[0]);
    WaitFor(echo);
    kill(peer.process, SIGKILL);
    WaitFor(peer.process);
}

struct DeathNotice {
    std::mutex lock;
    std::condition_variable changed;
    double told = 0;
};

void Deaths() {
    AIBinder_DeathRecipient* const recipient = AIBinder_DeathRecipient_new([](void* cookie) {
        auto* const notice = static_cast<DeathNotice*>(cookie);
        std::lock_guard<std::mutex> guard(notice->lock);
        notice->told = Now();
        notice->changed.notify_all();
    });
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        const Peer peer = StartPeer();
        DeathNotice notice;
        Require(AIBinder_linkToDeath(peer.binder.get(), recipient, &notice) == STATUS_OK, "link");
        const double start = Now();
        kill(peer.process, SIGKILL);
        std::unique_lock<std::mutex> guard(notice.lock);
        Require(notice.changed.wait_for(guard, std::chrono::seconds(10),
                                        [&] { return notice.told > 0; }),
                "learn of a peer's death within 10 s");
        times.push_back(notice.told - start);
        guard.unlock();
        WaitFor(peer.process);
    }
    PrintTime("A peer that is killed", "until its death is told", Median(times), 5);
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
