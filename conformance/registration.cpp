// Checks of the registered object and of its operations beside sessions.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraCallback.h>

#include "device.h"

namespace conformance {

namespace {

Verdict HasTheInterface(Device& device) {
    if (device.service != nullptr) return {};
    return Fail(Say("an object of ", package::IOfflineCameraService::descriptor),
                Say("one of another interface, registered as ", Device::kInstance));
}

Verdict WithService(Device& device, const std::function<Verdict()>& use) {
    return device.service != nullptr ? use() : Skip("see registration.interface");
}

Verdict TellsItsVersion(Device& device) {
    return WithService(device, [&]() -> Verdict {
        int32_t version = 0;
        std::string hash;
        const auto told = device.service->getInterfaceVersion(&version);
        if (!told.isOk() || version < 1) {
            return Fail("version 1",
                        told.isOk() ? Say("version ", version) : told.getDescription());
        }
        const auto hashed = device.service->getInterfaceHash(&hash);
        if (!hashed.isOk() || hash.empty()) return Fail("a hash", hashed.getDescription());
        if (version == 1 && hash == package::IOfflineCameraService::hash) return {};
        return Warn(Say("it is version ", version, ", hash ", hash,
                        "; this program was built with ", "version 1, hash ",
                        package::IOfflineCameraService::hash));
    });
}

Answer Register(Device& device, int32_t id,
                const std::shared_ptr<package::IOfflineCameraCallback>& callback) {
    return Bounded("registerClient", [=, service = device.service](int32_t*) {
        return service->registerClient(id, callback);
    });
}

Verdict TakesAClient(Device& device) {
    return WithService(device, [&]() -> Verdict {
        const Answer answer = Register(device, 0, device.NewRecorder());
        return answer.Ok() ? Verdict() : Fail("OK for client 0", answer.Text());
    });
}

Verdict TakesAClientAgain(Device& device) {
    return WithService(device, [&]() -> Verdict {
        for (int i = 0; i < 2; ++i) {
            const Answer answer = Register(device, 7, device.NewRecorder());
            if (!answer.Ok() && !answer.Refused()) return Fail("an answer", answer.Text());
        }
        return {};
    });
}

Verdict RefusesNullClient(Device& device) {
    return WithService(device, [&]() -> Verdict {
        const Answer answer = Register(device, 1, nullptr);
        return answer.Refused() ? Verdict() : Fail("a status that is not OK", answer.Text());
    });
}

Verdict RefusesForeignClient(Device& device) {
    return WithService(device, [&]() -> Verdict {
        const auto foreign =
                ndk::SharedRefBase::make<package::BpOfflineCameraCallback>(device.binder);
        const Answer answer = Register(device, 1, foreign);
        return answer.Refused() ? Verdict() : Fail("a status that is not OK", answer.Text());
    });
}

Verdict AnswersOperation1(Device& device) {
    return WithService(device, [&]() -> Verdict {
        const Answer answer = Bounded("getSupportedOpModes", [service = device.service](int32_t*) {
            std::vector<int32_t> modes;
            return service->getSupportedOpModes(&modes);
        });
        return answer.Ok() || answer.Refused() ? Verdict() : Fail("any answer", answer.Text());
    });
}

Verdict AnswersOperation3(Device& device) {
    return WithService(device, [&]() -> Verdict {
        Register(device, 2, device.NewRecorder());
        for (const int32_t id : {2, 2, 12345}) {  // known, then unknown
            const Answer answer =
                    Bounded("unregisterClient", [=, service = device.service](int32_t*) {
                        return service->unregisterClient(id);
                    });
            if (!answer.Ok() && !answer.Refused()) return Fail("any answer", answer.Text());
        }
        return {};
    });
}

}  // namespace

Checks RegistrationChecks() {
    return {
            {"registration.interface",
             "The registered object is of the interface IOfflineCameraService.",
             "Register an object of a class derived from BnOfflineCameraService.", HasTheInterface},
            {"registration.version", "The object tells its interface's version and hash.",
             "Leave getInterfaceVersion and getInterfaceHash to the generated class.",
             TellsItsVersion},
            {"registration.client", "registerClient takes a client's id and callback.",
             "Answer OK; the callback may be kept or not.", TakesAClient},
            {"registration.client-again",
             "registerClient answers a second registration of the same id.",
             "Replace the first registration or refuse the second; do not assert that the id is "
             "new.",
             TakesAClientAgain},
            {"registration.null-callback", "registerClient refuses a null callback.",
             "Test the callback before it is stored: a null binder arrives as a null pointer.",
             RefusesNullClient},
            {"registration.foreign-callback",
             "registerClient refuses a binder that is no IOfflineCameraCallback.",
             "Test the callback for null: a binder of another interface arrives as a null pointer.",
             RefusesForeignClient},
            {"registration.operation-1", "getSupportedOpModes is answered, by whatever status.",
             "Return a status; an operation that is not offered is refused, not left out.",
             AnswersOperation1},
            {"registration.operation-3",
             "unregisterClient is answered for known and unknown ids, by whatever status.",
             "Look the id up before use; refuse one that is not registered.", AnswersOperation3},
    };
}

}  // namespace conformance
