// Emits parcelables: an aggregate that reads and writes itself.
#include "cpp_types.h"
#include "emit.h"
#include "text.h"

namespace aidlc {
namespace {

const char* const kClass = R"(class $name$ {
  public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

$fields$

    binder_status_t readFromParcel(const AParcel* _aidl_parcel);
    binder_status_t writeToParcel(AParcel* _aidl_parcel) const;

$comparisons$

    static constexpr ::ndk::parcelable_stability_t _aidl_stability = ::ndk::$stability$;

    inline std::string toString() const {
        std::ostringstream _aidl_text;
        _aidl_text << "$name${";
$prints$
        _aidl_text << "}";
        return _aidl_text.str();
    }
};
)";

const char* const kSource = R"(const char* $name$::descriptor = "$canonical$";

binder_status_t $name$::readFromParcel(const AParcel* _aidl_parcel) {
    const int32_t _aidl_start = AParcel_getDataPosition(_aidl_parcel);
    int32_t _aidl_size = 0;
    binder_status_t _aidl_status = AParcel_readInt32(_aidl_parcel, &_aidl_size);
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
    if (_aidl_size < 4 || _aidl_start > INT32_MAX - _aidl_size) {
        return STATUS_BAD_VALUE;
    }
    const int32_t _aidl_end = _aidl_start + _aidl_size;
$reads$
    return AParcel_setDataPosition(_aidl_parcel, _aidl_end);
}

binder_status_t $name$::writeToParcel(AParcel* _aidl_parcel) const {
    const int32_t _aidl_start = AParcel_getDataPosition(_aidl_parcel);
    binder_status_t _aidl_status = AParcel_writeInt32(_aidl_parcel, 0);
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
$writes$
    const int32_t _aidl_end = AParcel_getDataPosition(_aidl_parcel);
    _aidl_status = AParcel_setDataPosition(_aidl_parcel, _aidl_start);
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
    _aidl_status = AParcel_writeInt32(_aidl_parcel, _aidl_end - _aidl_start);
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
    return AParcel_setDataPosition(_aidl_parcel, _aidl_end);
}
)";

// A sender with an older version stops earlier; what it does not send keeps its value.
const char* const kRead = R"(    if (AParcel_getDataPosition(_aidl_parcel) >= _aidl_end) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_end);
    }
    _aidl_status = $read$(_aidl_parcel, &$field$);
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
)";

const char* const kWrite = R"(    _aidl_status = $write$(_aidl_parcel, $field$);
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
)";

std::string Tie(const Declaration& declaration, const std::string& prefix) {
    std::vector<std::string> members;
    for (const Field& field : declaration.fields) {
        members.push_back(prefix + field.name);
    }
    return "std::tie(" + Join(members, ", ") + ")";
}

}  // namespace

std::string ParcelableBody(const Declaration& declaration) {
    std::string fields;
    std::string prints;
    for (const Field& field : declaration.fields) {
        fields += "    " + CppType(field.type) + " " + field.name + FieldInitializer(field) + ";\n";
        prints += "        _aidl_text << \"" + std::string(prints.empty() ? "" : ", ") +
                  field.name + ": \" << ::android::internal::ToString(" + field.name + ");\n";
    }
    return Expand(
            kClass,
            {{"name", declaration.name},
             {"fields", fields},
             {"comparisons",
              Comparisons(declaration.name, Tie(declaration, ""), Tie(declaration, "rhs."))},
             {"stability", declaration.vintfStability ? "STABILITY_VINTF" : "STABILITY_LOCAL"},
             {"prints", prints}});
}

std::string ParcelableSource(const Declaration& declaration) {
    std::string reads;
    std::string writes;
    for (const Field& field : declaration.fields) {
        reads += Expand(kRead, {{"read", ReadFunction(field.type)}, {"field", field.name}});
        writes += Expand(kWrite, {{"write", WriteFunction(field.type)}, {"field", field.name}});
    }
    return Expand(kSource, {{"name", declaration.name},
                            {"canonical", declaration.CanonicalName()},
                            {"reads", reads},
                            {"writes", writes}});
}

}  // namespace aidlc
