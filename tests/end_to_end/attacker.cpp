// Attacks the stand-in device it runs in, in one of several ways, while an honest client has its
// picture developed.
// usage: attacker N: the Nth attack, counted round and round. Status 1: something was let through,
// or the honest client came to harm.

#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraService.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <thread>

#include "host/services/offlinecamera/stream_set.h"
#include "tests/host/libbinder_ndk/raw_connection.h"
#include "tests/host/services/offlinecamera/graphics.h"
#include "tests/host/services/offlinecamera/quiet_client.h"

namespace {

namespace fs = std::filesystem;
using namespace offlinecamera;
using namespace ::aidl::vendor::zel::hardware::camera::offlinecamera;
using ::aidl::android::hardware::camera::device::StreamBuffer;
using hostbinder::FrameKind;

constexpr char kInstance[] =
        "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";
constexpr char kAllocator[] = "android.hardware.graphics.allocator.IAllocator/default";
constexpr char kDump[] =
        "/data/vendor/camera/offlinecameratest/"
        "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv";
constexpr uintmax_t kDumpSize = 4096 * 3072 * 3 / 2;

int gTell = -1;  // where an attacker says that it is in position

void tellInPosition() {
    if (write(gTell, "x", 1) != 1) _exit(1);
}

[[noreturn]] void fail(const std::string& what) {
    fprintf(stderr, "attacker: %s\n", what.c_str());
    _exit(1);
}

void require(bool condition, const std::string& what) {
    if (!condition) fail(what);
}

// A client that stays in its first callback: for ever, or stopped as a whole.
class StuckClient : public QuietClient {
  public:
    explicit StuckClient(std::function<void()> getStuck) : mGetStuck(std::move(getStuck)) {}
    ndk::ScopedAStatus notify(const std::vector<NotifyMsg>&) override {
        mGetStuck();
        for (;;) pause();
    }

  private:
    const std::function<void()> mGetStuck;
};

std::shared_ptr<IOfflineCameraService> camera() {
    ABinderProcess_startThreadPool();
    auto service = IOfflineCameraService::fromBinder(
            ndk::SpAIBinder(AServiceManager_checkService(kInstance)));
    require(service != nullptr, "there is no service");
    return service;
}

std::shared_ptr<IOfflineCameraSession> openSession(const std::function<void()>& getStuck) {
    std::shared_ptr<IOfflineCameraSession> session;
    const auto client = ndk::SharedRefBase::make<StuckClient>(getStuck);
    const auto status = camera()->openOfflineSession("attacker", client, &session);
    return status.isOk() ? session : nullptr;
}

OfflineSessionConfigureInfo configuration() {
    return Configuration(OpMode::kB2Y);
}

StreamBuffer buffer(const Stream& stream) {
    StreamBuffer buffer;
    buffer.streamId = stream.id;
    buffer.bufferId = 1;
    buffer.buffer = Allocate(stream);
    return buffer;
}

OfflineRequestInfo goodRequest() {
    OfflineRequestInfo request;
    request.frameNumber = -1;
    request.inFrameInfos.resize(1);
    request.inFrameInfos[0].buffers.push_back(buffer(configuration().streams[0]));
    request.outputBuffers.push_back(buffer(configuration().streams[1]));
    return request;
}

bool isTaken(IOfflineCameraSession& session, OfflineRequestInfo request) {
    std::vector<OfflineRequestInfo> requests;
    requests.push_back(std::move(request));
    int32_t frame = 0;
    return session.processOfflineRequest(requests, &frame).isOk();
}

// --- Attacks through the interface. ---

void stopInCallback() {
    const auto session = openSession([] {
        tellInPosition();
        raise(SIGSTOP);
    });
    require(session->configureOfflineStreams(configuration()).isOk(), "configuration refused");
    require(isTaken(*session, goodRequest()), "request refused");
    pause();
}

// Opens as many sessions as it gets, and stays in the callback of each.
void keepSessions() {
    std::vector<std::shared_ptr<IOfflineCameraSession>> sessions;
    for (int i = 0; i < 10000; ++i) {
        auto session = openSession([] {});
        if (session == nullptr) continue;
        require(session->configureOfflineStreams(configuration()).isOk(), "configuration refused");
        while (isTaken(*session, goodRequest())) {
        }
        sessions.push_back(std::move(session));
    }
    require(sessions.size() == 8, std::to_string(sessions.size()) + " sessions were opened");
    tellInPosition();
    for (;;) pause();
}

// Ends its session from within the session's own callback, where a service must not wait for it.
void closeInCallback() {
    std::shared_ptr<IOfflineCameraSession> session;
    session = openSession([&] {
        require(session->closeOfflineSession().isOk(), "a close in a callback was refused");
        tellInPosition();
    });
    require(session->configureOfflineStreams(configuration()).isOk(), "configuration refused");
    require(isTaken(*session, goodRequest()), "request refused");
    for (;;) pause();
}

// Requests of one session from many threads; the session is over before they are.
void requestAtOnce() {
    const auto session = openSession([] {});
    require(session->configureOfflineStreams(configuration()).isOk(), "configuration refused");
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 20; ++n) isTaken(*session, goodRequest());
        });
    }
    require(session->closeOfflineSession().isOk(), "a close was refused");
    for (std::thread& thread : threads) thread.join();
    require(!isTaken(*session, goodRequest()), "a closed session took a request");
}

int memoryFile(off_t size) {
    const int fd = memfd_create("attacker", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    require(ftruncate(fd, size) == 0, "ftruncate");
    return fd;
}

int pipeEnd() {
    int ends[2];
    require(pipe2(ends, O_CLOEXEC) == 0, "pipe");
    close(ends[1]);
    return ends[0];
}

void passOtherDescriptors() {
    const auto session = openSession([] {});
    require(session->configureOfflineStreams(configuration()).isOk(), "configuration refused");
    const auto requireRefused = [&](const char* what, const auto& change) {
        for (const bool input : {true, false}) {
            OfflineRequestInfo request = goodRequest();
            change(input ? &request.inFrameInfos[0].buffers[0].buffer
                         : &request.outputBuffers[0].buffer);
            require(!isTaken(*session, std::move(request)), std::string(what) + " was taken");
        }
    };
    const auto requireFdRefused = [&](const char* what, const auto& open) {
        requireRefused(what, [&](NativeHandle* handle) { handle->fds[0].set(open()); });
    };
    requireFdRefused("a pipe", pipeEnd);
    requireFdRefused("a folder", [] { return open("/", O_RDONLY | O_CLOEXEC); });
    requireFdRefused("a device", [] { return open("/dev/null", O_RDWR | O_CLOEXEC); });
    requireFdRefused("a socket", [] { return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0); });
    requireFdRefused("a file that can shrink", [] { return memoryFile(1 << 20); });
    requireFdRefused("an empty file", [] { return memoryFile(0); });
    requireFdRefused("a sparse file", [] { return memoryFile(off_t{1} << 40); });
    for (const int32_t value : {INT32_MIN, -1, 0, 1, INT32_MAX}) {
        requireRefused("a handle of odd integers", [&](NativeHandle* handle) {
            for (int32_t& integer : handle->ints) integer = value;
        });
    }
    requireRefused("a handle without integers", [](NativeHandle* h) { h->ints.clear(); });
    requireRefused("a handle of many integers", [](NativeHandle* h) { h->ints.resize(100000); });
    requireRefused("a handle of many descriptors", [](NativeHandle* handle) {
        while (handle->fds.size() < 200) handle->fds.emplace_back(pipeEnd());
    });
    OfflineRequestInfo fenced = goodRequest();
    fenced.inFrameInfos[0].buffers[0].acquireFence.fds.emplace_back(pipeEnd());
    require(isTaken(*session, std::move(fenced)), "a fence was refused");
    fenced = goodRequest();
    fenced.inFrameInfos[0].buffers[0].acquireFence.fds.emplace_back(
            socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    require(!isTaken(*session, std::move(fenced)), "a socket was taken for a fence");
}

void askForTheAbsurd() {
    const auto session = openSession([] {});
    for (const int32_t side : {INT32_MIN, -2, 0, 1, 1 << 30, INT32_MAX}) {
        OfflineSessionConfigureInfo info = configuration();
        for (Stream& stream : info.streams) stream.width = stream.height = side;
        require(!session->configureOfflineStreams(info).isOk(), "an absurd size was taken");
    }
    OfflineSessionConfigureInfo many = configuration();
    many.streams.resize(5000, many.streams[1]);
    require(!session->configureOfflineStreams(many).isOk(), "5000 streams were taken");
    require(session->configureOfflineStreams(configuration()).isOk(), "configuration refused");
    OfflineRequestInfo request = goodRequest();
    request.outputBuffers.resize(3000);
    require(!isTaken(*session, std::move(request)), "3000 buffers were taken");
    for (const int32_t frame : {INT32_MIN, -2, INT32_MAX}) {
        request = goodRequest();
        request.frameNumber = frame;
        require(!isTaken(*session, std::move(request)), "an absurd frame number was taken");
    }
    std::vector<OfflineRequestInfo> requests(10000);
    int32_t frame = 0;
    require(!session->processOfflineRequest(requests, &frame).isOk(), "10000 requests were taken");
}

// Large calls from many threads, and oneway calls on top.
void flood() {
    const auto service = camera();
    const auto call = [&] {
        std::shared_ptr<IOfflineCameraSession> session;
        const auto client = ndk::SharedRefBase::make<StuckClient>([] {});
        for (int i = 0; i < 30; ++i) {
            const auto status =
                    service->openOfflineSession(std::string(400 * 1024, 'x'), client, &session);
            require(!status.isOk(), "a name of 400 KiB was taken");
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 12; ++i) threads.emplace_back(call);
    const std::vector<uint8_t> filler(100 * 1024);
    for (int i = 0; i < 1000; ++i) {
        ndk::ScopedAParcel in;
        ndk::ScopedAParcel out;
        AIBinder_prepareTransaction(service->asBinder().get(), in.getR());
        ndk::AParcel_writeVector(in.get(), filler);
        AIBinder_transact(service->asBinder().get(), FIRST_CALL_TRANSACTION, in.getR(), out.getR(),
                          FLAG_ONEWAY);
    }
    for (std::thread& thread : threads) thread.join();
}

void addServices() {
    const auto object = ndk::SharedRefBase::make<StuckClient>([] {});
    int added = 0;
    for (int i = 0; i < 300; ++i) {
        const std::string name = "attacker/" + std::to_string(i);
        added += AServiceManager_addService(object->asBinder().get(), name.c_str()) == EX_NONE;
    }
    require(added < 300, "300 services were taken");
}

// --- Attacks below the interface, on every process. ---

// Of the processes that live: a socket's name begins with its process's number.
std::vector<std::string> sockets() {
    const std::string folder = getenv("STANDIN_BINDER_DIR");
    std::vector<std::string> paths = {folder + "/servicemanager"};
    for (const auto& entry : fs::directory_iterator(folder)) {
        const int pid = atoi(entry.path().filename().c_str() + 1);
        if (pid > 0 && kill(pid, 0) == 0) paths.push_back(entry.path());
    }
    require(paths.size() > 2, "no sockets to attack");
    return paths;
}

uint64_t numberOfService(const char* name) {
    return numberOf(ndk::SpAIBinder(AServiceManager_checkService(name)));
}

// Questions for objects, and so many calls that every pool has all its threads: nobody reads the
// answers.
void readNothing() {
    const uint64_t numbers[] = {hostbinder::kContextObject, numberOfService(kInstance),
                                numberOfService(kAllocator)};
    std::vector<std::unique_ptr<RawConnection>> connections;
    const auto connect = [&](const std::string& path) -> RawConnection& {
        connections.push_back(std::make_unique<RawConnection>(path));
        require(connections.back()->greet(), "no greeting");
        return *connections.back();
    };
    constexpr size_t kMany = 1000000;
    for (const std::string& path : sockets()) {
        const std::string question = bytesOf(frameHeader(FrameKind::kAcquire));
        require(connect(path).sendUntilClosed(question, kMany), "answers pile up");
        for (const uint64_t number : numbers) {
            RawConnection& connection = connect(path);
            if (!connection.acquire(number)) continue;
            hostbinder::FrameHeader ping = frameHeader(FrameKind::kCall);
            ping.target = number;
            ping.code = hostbinder::kPingCode;
            require(connection.sendUntilClosed(bytesOf(ping), kMany), "answers pile up");
        }
    }
    tellInPosition();
    for (;;) pause();
}

// The ends of a connection, of which the first waits for the second to read before it is closed.
std::vector<int> lingeringSockets() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int sending = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const bound = reinterpret_cast<sockaddr*>(&address);
    require(bind(listener, bound, size) == 0 && listen(listener, 1) == 0, "listen");
    require(getsockname(listener, bound, &size) == 0, "getsockname");
    require(connect(sending, bound, size) == 0, "connect");
    const int receiving = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    close(listener);
    const std::string unread(1 << 20, 'x');
    while (send(sending, unread.data(), unread.size(), MSG_DONTWAIT) > 0) {
    }
    const linger forHours = {1, 30000};
    require(setsockopt(sending, SOL_SOCKET, SO_LINGER, &forHours, sizeof forHours) == 0, "linger");
    return {sending, receiving};
}

void sendLingeringSockets() {
    std::string body;
    for (uint64_t i = 0; i < 2; ++i) {
        appendBytes(&body, hostbinder::ObjectRecord{hostbinder::kDescriptor, 0, i, 0});
    }
    hostbinder::FrameHeader ping =
            frameHeader(FrameKind::kCall, 2 * sizeof(hostbinder::ObjectRecord));
    for (uint32_t i = 0; i < 2; ++i)
        appendBytes(&body, i * uint32_t{sizeof(hostbinder::ObjectRecord)});
    ping.code = hostbinder::kPingCode;
    ping.objectCount = ping.descriptorCount = 2;
    for (const char* name : {kInstance, kAllocator}) {
        ping.target = numberOfService(name);
        for (const std::string& path : sockets()) {
            RawConnection connection(path);
            if (!connection.greet() || !connection.acquire(ping.target)) continue;
            for (int i = 0; i < 12; ++i) {  // more than the service has threads
                const std::vector<int> ends = lingeringSockets();
                connection.send(bytesOf(ping, body), ends);
                for (const int end : ends) close(end);
            }
        }
    }
}

// Clients whose callback objects never say what they are: more at a time than there are threads.
void registerUnknown() {
    hostbinder::FrameHeader call = frameHeader(FrameKind::kCall);
    call.target = numberOfService(kInstance);
    call.code = FIRST_CALL_TRANSACTION + 1;
    call.objectCount = call.referenceCount = 1;
    ndk::ScopedAParcel parcel;
    AIBinder_prepareTransaction(camera()->asBinder().get(), parcel.getR());
    AParcel_writeInt32(parcel.get(), 1);
    std::string body(static_cast<size_t>(AParcel_getDataSize(parcel.get())), '\0');
    AParcel_marshal(parcel.get(), reinterpret_cast<uint8_t*>(&body[0]), 0, body.size());
    const auto offset = static_cast<uint32_t>(body.size());
    appendBytes(&body, hostbinder::ObjectRecord{hostbinder::kBinderHandle, 0, 0, 0});
    appendBytes(&body, int32_t{hostbinder::kStabilitySystem});
    call.dataSize = static_cast<uint32_t>(body.size());
    appendBytes(&body, offset);
    appendBytes(&body, hostbinder::ReferenceRecord{hostbinder::ReferenceOwner::kSender, 0, 9, {}});
    std::vector<std::unique_ptr<RawConnection>> connections;
    for (const std::string& path : sockets()) {
        for (int i = 0; i < 24; ++i) {
            connections.push_back(std::make_unique<RawConnection>(path));
            RawConnection& connection = *connections.back();
            if (!connection.greet() || !connection.acquire(call.target)) break;
            for (int n = 0; n < 20; ++n) connection.send(bytesOf(call, body));
        }
    }
    tellInPosition();
    for (;;) pause();
}

void dieWithinMessages() {
    for (const std::string& path : sockets()) {
        RawConnection greeting(path);
        greeting.send(bytesOf(frameHeader(FrameKind::kHello, 8)).substr(0, 20), {1, 2});
        RawConnection calling(path);
        require(calling.greet(), "no greeting");
        calling.send(bytesOf(frameHeader(FrameKind::kCall, 1 << 19), "the beginning"),
                     std::vector<int>(200, STDERR_FILENO));
    }
}

void connectOften() {
    std::vector<std::unique_ptr<RawConnection>> connections;
    for (const std::string& path : sockets()) {
        for (int i = 0; i < 64; ++i) {
            connections.push_back(std::make_unique<RawConnection>(path));
        }
        require(connections.back()->isClosed(), "64 connections were taken");
    }
    tellInPosition();
    for (;;) pause();
}

void sendGarbage() {
    std::minstd_rand random(getpid());
    for (const std::string& path : sockets()) {
        for (int i = 0; i < 100; ++i) {
            RawConnection connection(path);
            require(connection.greet(), "no greeting");
            hostbinder::FrameHeader header{};
            auto* words = reinterpret_cast<uint32_t*>(&header);
            for (size_t w = 0; w < sizeof(header) / sizeof(*words); ++w) words[w] = random() << 1;
            header.magic = hostbinder::kFrameMagic;
            header.kind = static_cast<FrameKind>(random() % 8);
            connection.sendUntilClosed(bytesOf(header, std::string(random() % 500, '\x55')), 3);
        }
    }
}

using Attack = void (*)();
constexpr Attack kAttacks[] = {
        stopInCallback,  keepSessions,  passOtherDescriptors, askForTheAbsurd,     flood,
        addServices,     readNothing,   dieWithinMessages,    connectOften,        sendGarbage,
        closeInCallback, requestAtOnce, registerUnknown,      sendLingeringSockets};

void requireHonestClientServed() {
    std::error_code ignored;
    fs::remove(kDump, ignored);
    const int status = system("vexofflinecameratest-planes -t B2Y >/dev/null");
    require(status == 0, "the honest client ended with wait status " + std::to_string(status));
    require(fs::file_size(kDump, ignored) == kDumpSize, "the honest client got no picture");
}

}  // namespace

int main(int argc, char** argv) {
    const size_t number = argc == 2 ? strtoul(argv[1], nullptr, 10) : 0;
    int ends[2];
    require(pipe2(ends, O_CLOEXEC) == 0, "pipe");
    const pid_t child = fork();
    require(child >= 0, "fork");
    if (child == 0) {
        close(ends[0]);
        gTell = ends[1];
        kAttacks[number % std::size(kAttacks)]();
        tellInPosition();
        _exit(0);
    }
    close(ends[1]);
    char byte = 0;
    require(read(ends[0], &byte, 1) == 1, "attack " + std::to_string(number) + " failed");
    requireHonestClientServed();
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}
