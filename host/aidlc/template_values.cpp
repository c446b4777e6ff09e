// What headers begin with, and what enums, parcelables and unions are made of.
#include "templates.h"

namespace aidlc {

// The device's compiler includes as much as each type needs; here all headers include the same.
const char kHeaderStart[] = R"($banner$
#pragma once

#include <android/binder_enums.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_parcelable_utils.h>
#include <android/binder_to_string.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

%each included
#include <$header$>
%end
%each included
%each isClass
namespace $usedNamespace$ { class $usedName$; }
%end
%end

namespace $namespace$ {

)";

const char kSourceStart[] = R"($banner$
#include <$mainHeader$>
%each isInterface
#include <$stubHeader$>
#include <$proxyHeader$>
#include <android/binder_stability.h>
#include <host_binder_trace.h>
#include <host_unset_return.h>

#include <cstring>
%end

namespace $namespace$ {

)";

const char kNamespaceEnd[] = R"(}  // namespace $namespace$
)";

const char kNoInterface[] = R"($banner$
#error $fullName$ is no interface: there is no $className$
)";

// The values follow after the namespace; those of a union are its tags.
const char kEnumHeader[] = R"(enum class $name$ : $backing$ {
%each enumerators
    $value$ = $number$,
%end
};

[[nodiscard]] static inline std::string toString($name$ val) {
    switch (val) {
%each enumerators
%each isFirst
        case $name$::$value$:
            return "$value$";
%end
%end
    }
    return std::to_string(static_cast<$backing$>(val));
}
)";

const char kEnumValues[] = R"(
namespace ndk::internal {

template <>
constexpr inline std::array<$valueType$, $count$> enum_values<$valueType$> = {
%each enumerators
        $valueType$::$value$,
%end
};

}  // namespace ndk::internal
)";

const char kParcelableHeader[] = R"(class $name$ {
  public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

%each fields
    $type$ $field$$initializer$;
%end

    binder_status_t readFromParcel(const AParcel* _aidl_parcel);
    binder_status_t writeToParcel(AParcel* _aidl_parcel) const;

%each comparisons
    bool operator$op$([[maybe_unused]] const $name$& rhs) const {
        return std::tie($left$) $op$ std::tie($right$);
    }
%end

    static constexpr ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;

    inline std::string toString() const {
        std::ostringstream _aidl_text;
        _aidl_text << "$name${";
%each fields
        _aidl_text << "$comma$$field$: " << ::android::internal::ToString($field$);
%end
        _aidl_text << "}";
        return _aidl_text.str();
    }
};
)";

// A sender with an older version stops earlier; what it does not send keeps its value.
const char kParcelableSource[] = R"(const char* $name$::descriptor = "$fullName$";

binder_status_t $name$::readFromParcel(const AParcel* _aidl_parcel) {
    const int32_t _aidl_start = AParcel_getDataPosition(_aidl_parcel);
    int32_t _aidl_size = 0;
    binder_status_t _aidl_status = AParcel_readInt32(_aidl_parcel, &_aidl_size);
    if (_aidl_status != STATUS_OK) return _aidl_status;
    if (_aidl_size < 4 || _aidl_start > INT32_MAX - _aidl_size) return STATUS_BAD_VALUE;
    const int32_t _aidl_end = _aidl_start + _aidl_size;
%each fields
    if (AParcel_getDataPosition(_aidl_parcel) >= _aidl_end) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_end);
    }
    _aidl_status = ::ndk::AParcel_readData(_aidl_parcel, &$field$);
    if (_aidl_status != STATUS_OK) return _aidl_status;
%end
    return AParcel_setDataPosition(_aidl_parcel, _aidl_end);
}

binder_status_t $name$::writeToParcel(AParcel* _aidl_parcel) const {
    const int32_t _aidl_start = AParcel_getDataPosition(_aidl_parcel);
    binder_status_t _aidl_status = AParcel_writeInt32(_aidl_parcel, 0);
    if (_aidl_status != STATUS_OK) return _aidl_status;
%each fields
    _aidl_status = ::ndk::AParcel_writeData(_aidl_parcel, $field$);
    if (_aidl_status != STATUS_OK) return _aidl_status;
%end
    const int32_t _aidl_end = AParcel_getDataPosition(_aidl_parcel);
    _aidl_status = AParcel_setDataPosition(_aidl_parcel, _aidl_start);
    if (_aidl_status != STATUS_OK) return _aidl_status;
    _aidl_status = AParcel_writeInt32(_aidl_parcel, _aidl_end - _aidl_start);
    if (_aidl_status != STATUS_OK) return _aidl_status;
    return AParcel_setDataPosition(_aidl_parcel, _aidl_end);
}
)";

const char kUnionHeader[] = R"(class $name$ {
  public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    enum class Tag : int32_t {
%each fields
        $field$ = $index$,
%end
    };
%each fields
    static const inline Tag $field$ = Tag::$field$;
%end

    $name$() : _value(std::in_place_index<0>, $firstInitial$) {}

    // Holds the member that the value's type selects.
    template <typename _Tp,
              typename = std::enable_if_t<std::conjunction_v<
                      std::negation<std::is_same<std::decay_t<_Tp>, $name$>>,
                      std::is_convertible<_Tp, $variant$>>>>
    constexpr $name$(_Tp&& _arg) : _value(std::forward<_Tp>(_arg)) {}

    template <size_t _Np, typename... _Tp>
    constexpr explicit $name$(std::in_place_index_t<_Np> _index, _Tp&&... _args)
        : _value(_index, std::forward<_Tp>(_args)...) {}

    template <Tag _tag, typename... _Tp>
    static $name$ make(_Tp&&... _args) {
        return $name$(std::in_place_index<static_cast<size_t>(_tag)>, std::forward<_Tp>(_args)...);
    }

    template <Tag _tag, typename _Tp, typename... _Up>
    static $name$ make(std::initializer_list<_Tp> _list, _Up&&... _args) {
        return $name$(std::in_place_index<static_cast<size_t>(_tag)>, _list,
                      std::forward<_Up>(_args)...);
    }

    Tag getTag() const { return static_cast<Tag>(_value.index()); }

    template <Tag _tag>
    const auto& get() const { return std::get<static_cast<size_t>(_tag)>(_value); }

    template <Tag _tag>
    auto& get() { return std::get<static_cast<size_t>(_tag)>(_value); }

    template <Tag _tag, typename... _Tp>
    void set(_Tp&&... _args) {
        _value.emplace<static_cast<size_t>(_tag)>(std::forward<_Tp>(_args)...);
    }

    binder_status_t readFromParcel(const AParcel* _aidl_parcel);
    binder_status_t writeToParcel(AParcel* _aidl_parcel) const;

%each comparisons
    bool operator$op$([[maybe_unused]] const $name$& rhs) const {
        return _value $op$ rhs._value;
    }
%end

    static constexpr ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;

    inline std::string toString() const {
        std::ostringstream _aidl_text;
        _aidl_text << "$name${";
        switch (getTag()) {
%each fields
            case Tag::$field$:
                _aidl_text << "$field$: "
                           << ::android::internal::ToString(get<Tag::$field$>());
                break;
%end
        }
        _aidl_text << "}";
        return _aidl_text.str();
    }

  private:
    $variant$ _value;
};

[[nodiscard]] static inline std::string toString($name$::Tag val) {
    switch (val) {
%each fields
        case $name$::Tag::$field$:
            return "$field$";
%end
    }
    return std::to_string(static_cast<int32_t>(val));
}
)";

const char kUnionSource[] = R"(const char* $name$::descriptor = "$fullName$";

binder_status_t $name$::readFromParcel(const AParcel* _aidl_parcel) {
    int32_t _aidl_tag = 0;
    binder_status_t _aidl_status = AParcel_readInt32(_aidl_parcel, &_aidl_tag);
    if (_aidl_status != STATUS_OK) return _aidl_status;
    switch (static_cast<Tag>(_aidl_tag)) {
%each fields
        case Tag::$field$: {
            $type$ _aidl_value = $initial$;
            _aidl_status = ::ndk::AParcel_readData(_aidl_parcel, &_aidl_value);
            if (_aidl_status == STATUS_OK) {
                set<Tag::$field$>(std::move(_aidl_value));
            }
            return _aidl_status;
        }
%end
    }
    return STATUS_BAD_VALUE;
}

binder_status_t $name$::writeToParcel(AParcel* _aidl_parcel) const {
    const binder_status_t _aidl_status =
            AParcel_writeInt32(_aidl_parcel, static_cast<int32_t>(getTag()));
    if (_aidl_status != STATUS_OK) return _aidl_status;
    switch (getTag()) {
%each fields
        case Tag::$field$:
            return ::ndk::AParcel_writeData(_aidl_parcel, get<Tag::$field$>());
%end
    }
    return STATUS_BAD_VALUE;
}
)";

}  // namespace aidlc
