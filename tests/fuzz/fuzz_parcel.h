// Parcels with objects from fuzz input: pieces that each begin with a byte. Its three low bits say
// what follows: 0 a descriptor and 1 a binder, the other bits say which; otherwise raw bytes, as
// many as the next two bytes say.
#pragma once

#include <fcntl.h>
#include <graphics/buffer_handle.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "fuzz_input.h"
#include "host/libbinder_ndk/parcel.h"

enum Piece : uint8_t { kDescriptorPiece = 0, kBinderPiece = 1, kBytesPiece = 2 };
constexpr int kPieceShift = 3;

// The buffers that inputs refer to, by format: they fit streams of 16 x 12 and a 2000 bytes BLOB.
inline const std::vector<graphics::UniqueHandle>& fuzzBuffers() {
    static const auto* const buffers = []() {
        auto* made = new std::vector<graphics::UniqueHandle>(3);
        const graphics::BufferDescription descriptions[] = {
                {"f", 16, 12, 1, graphics::kFormatRaw10, 3, 0},
                {"f", 16, 12, 1, graphics::kFormatYcbcr420, 3, 0},
                {"f", 2000, 1, 1, graphics::kFormatBlob, 3, 0}};
        for (size_t i = 0; i < 3; ++i) {
            auto created = graphics::CreateBuffer(descriptions[i]);
            require(created.Ok());
            (*made)[i] = std::move(created).Value();
        }
        return made;
    }();
    return *buffers;
}

// An owned descriptor: one of the buffers' or something else.
inline int fuzzDescriptor(unsigned which) {
    if (which < fuzzBuffers().size()) {
        return fcntl(fuzzBuffers()[which]->data[0], F_DUPFD_CLOEXEC, 0);
    }
    return open(which % 2 == 0 ? "/" : "/dev/null", O_RDONLY | O_CLOEXEC);
}

// Handles in the bytes get the id of the real buffer of their format, which differs in every run.
inline void fixBufferIds(AParcel* parcel) {
    graphics::HandleIntegers integers;
    for (size_t at = 0; at + sizeof(integers) <= parcel->size(); at += 4) {
        memcpy(&integers, parcel->data() + at, sizeof(integers));
        if (integers.magic != graphics::kHandleMagic) continue;
        for (const auto& buffer : fuzzBuffers()) {
            graphics::HandleIntegers real;
            require(graphics::ReadIntegers(buffer.get(), &real));
            if (real.format == integers.format) integers.id = real.id;
        }
        memcpy(parcel->mutableData() + at, &integers, sizeof(integers));
    }
}

// Appends what the input says. `binders` are borrowed; a null one is written as such.
inline void fillParcel(AParcel* parcel, FuzzInput input, const std::vector<AIBinder*>& binders) {
    while (input.left() > 0) {
        const auto piece = input.take<uint8_t>();
        const unsigned which = piece >> kPieceShift;
        if ((piece & 7) == kDescriptorPiece) {
            parcel->writeObject(hostbinder::kDescriptor, nullptr, fuzzDescriptor(which));
        } else if ((piece & 7) == kBinderPiece) {
            AParcel_writeStrongBinder(parcel,
                                      binders.empty() ? nullptr : binders[which % binders.size()]);
        } else {
            const std::string bytes = input.bytes(input.take<uint16_t>());
            uint8_t* place = bytes.empty() ? nullptr : parcel->grow(bytes.size());
            if (place != nullptr) memcpy(place, bytes.data(), bytes.size());
        }
    }
    fixBufferIds(parcel);
    parcel->setPosition(0);
}

// Fails when the process has ever more descriptors open from one input to the next.
inline void requireNoDescriptorLeak() {
    const int probe = open("/dev/null", O_RDONLY | O_CLOEXEC);
    static const int first = probe;
    require(probe >= 0 && probe < first + 64);
    close(probe);
}
