// One request from shutter to result, on its session's thread.
#pragma once

#include <memory>

#include "faults.h"
#include "pipeline.h"
#include "session_worker.h"

namespace offlinecamera {

/**
 * Sends the shutter message, runs the pipeline, sends the result: the output buffers' and the input
 * buffers' ids without handles, one part of metadata. If the pipeline fails, an error message
 * (ERROR_REQUEST) goes before the result, and the result's output buffers have status ERROR.
 * Once stopped, nothing more is sent.
 */
class FrameRunner {
  public:
    FrameRunner(std::shared_ptr<IOfflineCameraCallback> client,
                ::android::sp<ImportedBuffer::IMapper> mapper,
                std::shared_ptr<const FaultInjector> faults)
        : mClient(std::move(client)),
          mMapper(mapper),
          mFaults(std::move(faults)),
          mPipeline(std::move(mapper), *mFaults) {}

    void Run(Request& request, const StopSignal& stop) const;

  private:
    void Notify(std::vector<NotifyMsg> messages, const StopSignal& stop) const;
    void SendResults(std::vector<OfflineCaptureResult> results, const StopSignal& stop) const;

    const std::shared_ptr<IOfflineCameraCallback> mClient;
    const ::android::sp<ImportedBuffer::IMapper> mMapper;
    const std::shared_ptr<const FaultInjector> mFaults;
    const Pipeline mPipeline;
};

}  // namespace offlinecamera
