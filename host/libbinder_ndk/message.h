// Parcels as messages: the objects in a parcel become references and descriptors of a frame, and
// back.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "frame_io.h"
#include "parcel.h"

namespace hostbinder {

class Connection;

// A reference to an object of a third process, to be resolved before the parcel is used: that may
// take a call to the object's process, which the thread that reads a connection never makes.
struct UnresolvedReference {
    size_t objectIndex;  // in the parcel
    std::string owner;
    uint64_t number;
};

// A received parcel with what is left to do before it is used.
struct IncomingMessage {
    FrameHeader header{};
    binder_status_t status = STATUS_OK;  // not OK: the parcel cannot be used
    std::unique_ptr<AParcel> parcel;
    std::vector<UnresolvedReference> unresolved;
};

// Fills the frame from the parcel, whose bytes and descriptors it borrows. Counts references to own
// objects as sent; undoExports takes that back if the frame is not sent. Objects of third processes
// go to *heldForPeer (owned references), which are to be kept until the peer has them.
binder_status_t encodeMessage(AParcel* parcel, Connection* connection, OutgoingFrame* frame,
                              std::vector<AIBinder*>* heldForPeer);
void undoExports(Connection* connection, const OutgoingFrame& frame);

// Takes over a frame's content. False, with *reason, if it is malformed.
bool decodeMessage(IncomingFrame* frame, const std::shared_ptr<Connection>& connection,
                   IncomingMessage* message, std::string* reason);

// Gets the references to objects of third processes and tells the sender. Not on a reader thread.
void resolveReferences(IncomingMessage* message, Connection* connection);

}  // namespace hostbinder
