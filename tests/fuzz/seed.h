// Seeds: files in the form that fillParcel() and the fuzzers of calls and records read.
#pragma once

#include <android/binder_parcel_utils.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz_parcel.h"

inline void saveSeed(const std::filesystem::path& path, const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

template <typename T>
std::string bytesOf(const T& value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof(value));
}

inline std::string sized(const std::string& bytes) {
    return bytesOf(static_cast<uint16_t>(bytes.size())) + bytes;
}

// Of the buffer whose handle's integers come next behind the descriptor at `offset`: the number of
// the fuzzers' buffer of the same format; 0 where there are none.
inline unsigned bufferNumber(const std::string& bytes, size_t offset) {
    for (size_t at = offset; at + sizeof(graphics::HandleIntegers) <= bytes.size(); at += 4) {
        graphics::HandleIntegers integers;
        memcpy(&integers, bytes.data() + at, sizeof(integers));
        if (integers.magic != graphics::kHandleMagic) continue;
        for (unsigned i = 0; i < fuzzBuffers().size(); ++i) {
            graphics::HandleIntegers real;
            require(graphics::ReadIntegers(fuzzBuffers()[i].get(), &real));
            if (real.format == integers.format) return i;
        }
    }
    return 0;
}

// The parcel in the form that fillParcel() reads. Binders are the client, number 2.
inline std::string pieces(const AParcel& parcel) {
    const std::string bytes(reinterpret_cast<const char*>(parcel.data()), parcel.size());
    std::string text;
    size_t done = 0;
    const auto copyUntil = [&](size_t end) {
        if (end > done) text += char{kBytesPiece} + sized(bytes.substr(done, end - done));
    };
    for (const auto& object : parcel.objects()) {
        copyUntil(object.offset);
        done = object.offset + sizeof(hostbinder::ObjectRecord);
        if (object.binder == nullptr) {
            text += static_cast<char>(kDescriptorPiece | bufferNumber(bytes, done) << kPieceShift);
        } else {
            text += static_cast<char>(kBinderPiece | 2 << kPieceShift);
            done += sizeof(int32_t);  // the stability level, which is written with the binder
        }
    }
    copyUntil(bytes.size());
    return text;
}

inline std::string call(char target, char code, const AParcel& parcel) {
    return std::string{target, code, 0} + sized(pieces(parcel));
}

template <typename Record>
std::string record(char index, const Record& value) {
    AParcel parcel;
    require(value.writeToParcel(&parcel) == STATUS_OK);
    return index + pieces(parcel);
}
