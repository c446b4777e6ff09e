// hidl_vec: an array of elements that either owns its storage or points at someone else's.
#pragma once

#include <hidl/HidlInternal.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

namespace android {
namespace hardware {

// Sizes are in elements and limited to 32 bits; a larger one ends the process. Copies are deep and
// own their storage (new[] / delete[]), whatever the source did.
template <typename T>
struct hidl_vec {
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    hidl_vec() = default;
    hidl_vec(size_t size) { allocate(size); }
    hidl_vec(const hidl_vec& other) { assign(other.begin(), other.end()); }
    hidl_vec(hidl_vec&& other) noexcept { take(other); }
    hidl_vec(std::initializer_list<T> list) { assign(list.begin(), list.end()); }
    hidl_vec(const std::vector<T>& other) { assign(other.begin(), other.end()); }

    template <typename InputIterator,
              typename = std::enable_if_t<std::is_convertible_v<
                      typename std::iterator_traits<InputIterator>::iterator_category,
                      std::input_iterator_tag>>>
    hidl_vec(InputIterator first, InputIterator last) {
        assign(first, last);
    }

    ~hidl_vec() { releaseStorage(); }

    hidl_vec& operator=(const hidl_vec& other) {
        // The copy comes first: `other` may be a view of this object's storage.
        hidl_vec copy(other);
        return *this = std::move(copy);
    }
    hidl_vec& operator=(hidl_vec&& other) noexcept {
        if (this != &other) {
            releaseStorage();
            take(other);
        }
        return *this;
    }
    hidl_vec& operator=(const std::vector<T>& other) { return *this = hidl_vec(other); }
    hidl_vec& operator=(std::initializer_list<T> list) { return *this = hidl_vec(list); }

    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }

    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    size_t size() const { return mSize; }
    T& operator[](size_t index) { return mBuffer[index]; }
    const T& operator[](size_t index) const { return mBuffer[index]; }

    iterator begin() { return data(); }
    iterator end() { return data() + mSize; }
    const_iterator begin() const { return data(); }
    const_iterator end() const { return data() + mSize; }
    iterator find(const T& value) { return std::find(begin(), end(), value); }
    const_iterator find(const T& value) const { return std::find(begin(), end(), value); }
    bool contains(const T& value) const { return find(value) != end(); }

    // Points at `data` (`size` elements) from now on. With `shouldOwn` the storage must come from
    // new[] and is deleted by this object; otherwise the caller keeps it alive.
    void setToExternal(T* data, size_t size, bool shouldOwn = false) {
        const uint32_t checked = details::checkedSize(size);
        releaseStorage();
        mBuffer = data;
        mSize = checked;
        mOwnsBuffer = shouldOwn;
    }

    // Returns storage that the caller must delete[] (a copy if it was not owned); empties this.
    T* releaseData() {
        if (!mOwnsBuffer && mBuffer != nullptr) resize(mSize);
        T* released = mBuffer;
        mOwnsBuffer = false;
        mBuffer = nullptr;
        mSize = 0;
        return released;
    }

    // Always moves to new storage: kept elements are copied, added ones are value-initialised.
    void resize(size_t size) {
        hidl_vec resized(size);
        const size_t kept = std::min<size_t>(size, mSize);
        std::copy(begin(), begin() + kept, resized.begin());
        *this = std::move(resized);
    }

    bool operator==(const hidl_vec& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }
    bool operator!=(const hidl_vec& other) const { return !(*this == other); }

  private:
    details::hidl_pointer<T> mBuffer;
    uint32_t mSize = 0;
    bool mOwnsBuffer = true;

    void allocate(size_t size) {
        mSize = details::checkedSize(size);
        mBuffer = new T[size]();
        mOwnsBuffer = true;
    }

    template <typename InputIterator>
    void assign(InputIterator first, InputIterator last) {
        const auto count = std::distance(first, last);
        if (count < 0) details::fatal("hidl_vec: the last iterator comes before the first one");
        allocate(static_cast<size_t>(count));
        std::copy(first, last, begin());
    }

    void take(hidl_vec& other) {
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.mBuffer = nullptr;
        other.mSize = 0;
        other.mOwnsBuffer = true;
    }

    void releaseStorage() {
        if (mOwnsBuffer) delete[] static_cast<T*>(mBuffer);
        mBuffer = nullptr;
        mSize = 0;
    }
};
static_assert(sizeof(hidl_vec<char>) == 16, "wrong size");

}  // namespace hardware
}  // namespace android
