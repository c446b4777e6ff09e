// hidl_vec: an array of elements that owns its storage.
#pragma once

#include <hidl/HidlInternal.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace android::hardware {

// Sizes are in elements and limited to 32 bits; a larger one ends the process. Copies are deep.
template <typename T>
struct hidl_vec {
    hidl_vec() = default;
    hidl_vec(size_t size)
        : m_data(new T[details::checkedSize(size)]()), m_size(static_cast<uint32_t>(size)) {}
    hidl_vec(std::initializer_list<T> list) : hidl_vec(list.begin(), list.end()) {}
    hidl_vec(const std::vector<T>& other) : hidl_vec(other.data(), other.data() + other.size()) {}
    hidl_vec(const T* first, const T* last) : hidl_vec(static_cast<size_t>(last - first)) {
        std::copy(first, last, begin());
    }
    hidl_vec(const hidl_vec& other) : hidl_vec(other.begin(), other.end()) {}
    hidl_vec(hidl_vec&& other) noexcept { swap(other); }
    hidl_vec& operator=(hidl_vec other) noexcept {
        swap(other);
        return *this;
    }

    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }

    T* data() { return m_data.get(); }
    const T* data() const { return m_data.get(); }
    size_t size() const { return m_size; }
    T& operator[](size_t index) { return m_data[index]; }
    const T& operator[](size_t index) const { return m_data[index]; }

    T* begin() { return data(); }
    T* end() { return data() + m_size; }
    const T* begin() const { return data(); }
    const T* end() const { return data() + m_size; }

    // Always moves to new storage: kept elements are copied, added ones are value-initialised.
    void resize(size_t size) {
        hidl_vec resized(size);
        std::copy(begin(), begin() + std::min<size_t>(size, m_size), resized.begin());
        swap(resized);
    }

    bool operator==(const hidl_vec& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }
    bool operator!=(const hidl_vec& other) const { return !(*this == other); }

  private:
    std::unique_ptr<T[]> m_data;
    uint32_t m_size = 0;

    void swap(hidl_vec& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
    }
};
static_assert(sizeof(hidl_vec<char>) == 16, "wrong size");

}  // namespace android::hardware
