// The command line: one option chooses one offline test, which then runs straight through.

#include <android/binder_process.h>
#include <android/log.h>
#include <getopt.h>

#include <cstdint>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>

#include "client/vexofflinecameraclient.h"

using ::vendor::zel::hardware::camera::offlinecamera::implementation::OfflineCameraClient;
namespace client = ::vendor::zel::hardware::camera::offlinecamera::implementation;

#define DRIVER_LOGI(...) __android_log_print(ANDROID_LOG_INFO, "OfflineCameraTest", __VA_ARGS__)

void printHelp();

namespace {

// Kept: the driver does not read it.
[[maybe_unused]] const std::string kTestDataDirectory = client::kOfflineDataDirectory;

constexpr uint32_t kMaxBinderThreads = 6;
constexpr int32_t kCallbackOnly = 255;
constexpr int kUsageError = -1;

struct TestCommand {
    const char* word;
    int32_t opMode;
    const char* label;
};

constexpr TestCommand kTestCommands[] = {
        {"B2Y", client::kB2Y, "opMode: B2Y="}, {"Y2J", client::kY2J, "opMode: Y2J="},
        {"Y2Y", client::kY2Y, "opMode: Y2Y="}, {"MMF", client::kMMF, "opMode: MMF="},
        {"QLL", client::kQLL, "opMode: MMF="},  // kept: MMF's label
        {"R2R", client::kR2R, "opMode: R2R="}, {"callback", kCallbackOnly, "callback only mode="},
};

void PrintLine(const char* line) {
    std::cout << line << std::endl;  // flushed: a run that hangs or crashes shows its progress
}

void PrintUsageHint() {
    PrintLine("**********************************");
    PrintLine("please execute help cmd to know the usage");
    PrintLine("    adb shell vexofflinecameratest -h    ");
    PrintLine("**********************************");
}

const TestCommand* FindTestCommand(const std::string& word) {
    for (const TestCommand& command : kTestCommands) {
        if (strcmp(command.word, word.c_str()) == 0) {
            return &command;
        }
    }
    return nullptr;
}

struct Options {
    std::optional<std::string> command;  // none: the program ends with exitStatus
    int exitStatus = 0;
};

// Kept: -h, an unknown option and a missing argument end the program with status -1 when they come
// first, and with 0 after a -t.
Options ParseOptions(int argc, char** argv) {
    constexpr char kOptions[] = "t:h";
    int option = getopt(argc, argv, kOptions);
    if (option == -1) {
        PrintUsageHint();
    }
    Options options{{}, option == 't' ? 0 : kUsageError};
    while (option == 't') {
        options.command = optarg;
        option = getopt(argc, argv, kOptions);
    }
    if (option == 'h') {
        printHelp();
    }
    if (option != -1) {
        options.command.reset();
    }
    return options;
}

void RunOfflineTest(OfflineCameraClient& offlineClient, int32_t opMode) {
    offlineClient.setOpMode(opMode);
    offlineClient.OpenOfflineSession("offlincameratest");  // kept: the spelling
    if (offlineClient.ConfigureOfflineStreams("2") == 0) {
        DRIVER_LOGI("ProcessOfflineRequest");
        if (offlineClient.ProcessOfflineRequest() == 0) {
            DRIVER_LOGI("WaitCaptureResultCompleted");
            offlineClient.WaitCaptureResultCompleted();
        }
    }
    offlineClient.ClearResultsAndMessages();
    offlineClient.CloseOfflineSession();
}

}  // namespace

void printHelp() {
    PrintLine("******Offline camera client test tool******");
    PrintLine("Options:");
    PrintLine("    -h: print help message");
    PrintLine(
            "    -t: run test command: -t B2Y; -t Y2J; -t Y2Y; -t MMF; -t QLL; -t R2R; -t "
            "callback");
    PrintLine("");
    PrintLine("Example:");
    PrintLine("    adb shell vexofflinecameratest -t B2Y");
    PrintLine("**********************************");
}

int main(int argc, char** argv) {
    const Options options = ParseOptions(argc, argv);
    if (!options.command.has_value()) {
        return options.exitStatus;
    }
    std::cout << "cmd: -t=" << *options.command << std::endl;
    const TestCommand* const command = FindTestCommand(*options.command);
    if (command == nullptr) {
        printHelp();
        return kUsageError;
    }
    std::cout << command->label << command->opMode << std::endl;
    std::cout << "ret: =" << 0 << std::endl;

    DRIVER_LOGI("%s: offline camera client connect to service ", __func__);
    OfflineCameraClient& offlineClient = OfflineCameraClient::GetInstance();
    // Only now: callbacks use the client from the pool's threads.
    ABinderProcess_setThreadPoolMaxThreadCount(kMaxBinderThreads);
    ABinderProcess_startThreadPool();

    DRIVER_LOGI("%s: offline camera client opMode %d", __func__, command->opMode);
    if (command->opMode == kCallbackOnly) {
        offlineClient.registerClient(0);
    } else {
        RunOfflineTest(offlineClient, command->opMode);
    }
    DRIVER_LOGI("%s: offline camera client exit", __func__);
    return 0;
}
