// Emits unions: a tagged variant that reads and writes itself.
#include "cpp_types.h"
#include "emit.h"
#include "text.h"

namespace aidlc {
namespace {

const char* const kClass = R"(class $name$ {
  public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    enum class Tag : int32_t {
$tags$
    };
$constants$

    $name$() : _value(std::in_place_index<0>, $initial$) {}

    /** Holds the member that the value's type selects. */
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

    Tag getTag() const { return static_cast<Tag>(_value.index()); }

    template <Tag _tag>
    const auto& get() const {
        if (getTag() != _tag) {
            __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__, "this member is not the one held");
        }
        return std::get<static_cast<size_t>(_tag)>(_value);
    }

    template <Tag _tag>
    auto& get() {
        if (getTag() != _tag) {
            __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__, "this member is not the one held");
        }
        return std::get<static_cast<size_t>(_tag)>(_value);
    }

    template <Tag _tag, typename... _Tp>
    void set(_Tp&&... _args) {
        _value.emplace<static_cast<size_t>(_tag)>(std::forward<_Tp>(_args)...);
    }

    binder_status_t readFromParcel(const AParcel* _aidl_parcel);
    binder_status_t writeToParcel(AParcel* _aidl_parcel) const;

$comparisons$

    static constexpr ::ndk::parcelable_stability_t _aidl_stability = ::ndk::$stability$;

    inline std::string toString() const {
        std::ostringstream _aidl_text;
        _aidl_text << "$name${";
        switch (getTag()) {
$prints$
        }
        _aidl_text << "}";
        return _aidl_text.str();
    }

  private:
    $variant$ _value;
};

[[nodiscard]] static inline std::string toString($name$::Tag val) {
    switch (val) {
$cases$
    }
    return std::to_string(static_cast<int32_t>(val));
}
)";

const char* const kSource = R"(const char* $name$::descriptor = "$canonical$";

binder_status_t $name$::readFromParcel(const AParcel* _aidl_parcel) {
    int32_t _aidl_tag = 0;
    binder_status_t _aidl_status = AParcel_readInt32(_aidl_parcel, &_aidl_tag);
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
    switch (static_cast<Tag>(_aidl_tag)) {
$reads$
    }
    return STATUS_BAD_VALUE;
}

binder_status_t $name$::writeToParcel(AParcel* _aidl_parcel) const {
    const binder_status_t _aidl_status =
            AParcel_writeInt32(_aidl_parcel, static_cast<int32_t>(getTag()));
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
    switch (getTag()) {
$writes$
    }
    return STATUS_BAD_VALUE;
}
)";

const char* const kRead = R"(        case Tag::$member$: {
            $type$ _aidl_value = $initial$;
            _aidl_status = $read$(_aidl_parcel, &_aidl_value);
            if (_aidl_status == STATUS_OK) {
                set<Tag::$member$>(std::move(_aidl_value));
            }
            return _aidl_status;
        }
)";

const char* const kWrite = R"(        case Tag::$member$:
            return $write$(_aidl_parcel, get<Tag::$member$>());
)";

const char* const kPrint = R"(            case Tag::$member$:
                _aidl_text << "$member$: "
                           << ::android::internal::ToString(get<Tag::$member$>());
                break;
)";

}  // namespace

std::string UnionBody(const Declaration& declaration) {
    std::vector<std::string> types;
    std::string tags;
    std::string constants;
    std::string prints;
    std::string cases;
    for (const Field& field : declaration.fields) {
        tags += "        " + field.name + " = " + std::to_string(types.size()) + ",\n";
        constants += "    static const inline Tag " + field.name + " = Tag::" + field.name + ";\n";
        prints += Expand(kPrint, {{"member", field.name}});
        cases += "        case " + declaration.name + "::Tag::" + field.name +
                 ":\n            return " + Quote(field.name) + ";\n";
        types.push_back(CppType(field.type));
    }
    const std::string variant = "std::variant<" + Join(types, ", ") + ">";
    return Expand(kClass, {{"name", declaration.name},
                           {"tags", tags},
                           {"constants", constants},
                           {"initial", InitialValue(declaration.fields.front())},
                           {"variant", variant},
                           {"comparisons", Comparisons(declaration.name, "_value", "rhs._value")},
                           {"stability",
                            declaration.vintfStability ? "STABILITY_VINTF" : "STABILITY_LOCAL"},
                           {"prints", prints},
                           {"cases", cases}});
}

std::string UnionSource(const Declaration& declaration) {
    std::string reads;
    std::string writes;
    for (const Field& field : declaration.fields) {
        reads += Expand(kRead, {{"member", field.name},
                                {"type", CppType(field.type)},
                                {"initial", InitialValue(field)},
                                {"read", ReadFunction(field.type)}});
        writes += Expand(kWrite, {{"member", field.name}, {"write", WriteFunction(field.type)}});
    }
    return Expand(kSource, {{"name", declaration.name},
                            {"canonical", declaration.CanonicalName()},
                            {"reads", reads},
                            {"writes", writes}});
}

}  // namespace aidlc
