// Checks of the registered object and of its operations beside sessions.
#include "device.h"

namespace conformance {

namespace {

Verdict TellsItsVersion(Device& device) {
    int32_t version = 0;
    std::string hash;
    const auto told = device.service->getInterfaceVersion(&version);
    const auto hashed = device.service->getInterfaceHash(&hash);
    return Require(told.isOk() && hashed.isOk() && version >= 1 && !hash.empty(),
                   "version 1 and a hash", Say("version ", version, ", hash '", hash, "'"));
}

Verdict TakesAClient(Device& device) {
    const auto client = ndk::SharedRefBase::make<Recorder>(&device.pool);
    const Verdict first = device.Register(7, client).MustSucceed("OK for client 7");
    return first.Good() ? device.Register(7, client).MustReturn() : first;
}

Verdict Unregisters(Device& device) {
    device.Register(2, ndk::SharedRefBase::make<Recorder>(&device.pool));
    for (const int32_t id : {2, 2, 12345}) {  // known, then unknown
        const Answer answer = Bounded("unregisterClient", [=, service = device.service](Answer*) {
            return service->unregisterClient(id);
        });
        if (!answer.MustReturn().Good()) return answer.MustReturn();
    }
    return {};
}

}  // namespace

const Checks kRegistrationChecks = {
        {"interface", "The registered object is an IOfflineCameraService.",
         [](Device& d) {
             return Require(d.service != nullptr, package::IOfflineCameraService::descriptor,
                            "an object of another interface");
         }},
        {"version", "The object tells its interface's version and hash.", TellsItsVersion},
        {"client", "registerClient takes a client, and answers a second time.", TakesAClient},
        {"null", "registerClient refuses a null callback.",
         [](Device& d) { return d.Register(1, nullptr).MustBeRefused(); }},
        {"foreign", "registerClient refuses a binder that is no callback.",
         [](Device& d) { return d.Register(1, d.ForeignCallback()).MustBeRefused(); }},
        {"operation-1", "getSupportedOpModes is answered, by whatever status.",
         [](Device& d) { return d.ListModes().MustReturn(); }},
        {"operation-3", "unregisterClient is answered, also for unknown ids.", Unregisters},
};

}  // namespace conformance
