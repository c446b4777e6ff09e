// Buffer handles of arbitrary shape and integers over a real memory file.
#include <fcntl.h>
#include <graphics/imported_buffers.h>
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz_input.h"

using namespace graphics;

namespace {

// A handle with the input's integers instead of those that `made` has, except where the input asks
// for the real inode or size, which it cannot guess.
UniqueHandle disturbed(const native_handle_t* made, FuzzInput* input) {
    const auto choice = input->take<uint8_t>();
    const int ints = (choice & 1) != 0 ? input->take<uint8_t>() : kHandleInts;
    UniqueHandle handle(native_handle_create((choice & 2) != 0 ? 0 : 1, ints));
    if (handle->numFds > 0) handle->data[0] = fcntl(made->data[0], F_DUPFD_CLOEXEC, 0);
    std::string bytes = input->rest();
    bytes.resize(static_cast<size_t>(ints) * sizeof(int));
    memcpy(handle->data + handle->numFds, bytes.data(), bytes.size());
    HandleIntegers integers;
    HandleIntegers real;
    if (ReadIntegers(handle.get(), &integers) && ReadIntegers(made, &real)) {
        if ((choice & 4) != 0) integers.id = real.id;
        if ((choice & 8) != 0) integers.size = real.size;
        WriteIntegers(integers, handle.get());
    }
    return handle;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    auto created = CreateBuffer({"x", 16, 12, 1, kFormatYcbcr420, 3, 0});
    require(created.Ok());
    const UniqueHandle made = std::move(created).Value();
    if (input.take<uint8_t>() % 4 == 0) {  // a file of the wrong size, or one that can shrink
        const int file = memfd_create("other", MFD_CLOEXEC | MFD_ALLOW_SEALING);
        require(ftruncate(file, input.take<uint16_t>()) == 0);
        require(dup3(file, made->data[0], O_CLOEXEC) >= 0 && close(file) == 0);
    }
    const UniqueHandle raw = disturbed(made.get(), &input);
    ImportedBuffers& buffers = ImportedBuffers::Instance();
    const auto result = buffers.Import(raw.get());
    if (!result.Ok()) return 0;
    const native_handle_t* const imported = result.Value();
    const auto info = buffers.Describe(imported);
    require(info.Ok());
    if (const auto memory = buffers.Lock(imported, 3, {}, -1); memory.Ok()) {
        memset(memory.Value(), 1, info.Value().layout.size);  // every byte it promises is there
        require(buffers.Unlock(imported).Ok());
    }
    require(buffers.Release(imported).Ok() && !buffers.Release(imported).Ok());
    return 0;
}
