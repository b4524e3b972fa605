// The printable labels of the shared enumerations.
#include <vkmibh/labels.h>
#include <vkmibh/rqmap.h>

namespace VLK {

namespace {

constexpr char kUnknown[] = "unknown";

// The label of `value` in a table that starts at `first`.
template <int N>
const char* LabelAt(const char* const (&labels)[N], int first, int value)
{
    return value >= first && value - first < N ? labels[value - first] : kUnknown;
}

} // namespace

const char* LabelRowStatus(ERowStatus value)
{
    static constexpr const char* kLabels[] = {"active",      "notInService",  "notReady",
                                              "createAndGo", "createAndWait", "destroy"};
    return LabelAt(kLabels, eRowActive, static_cast<int>(value));
}

const char* LabelStorageType(EStorageType value)
{
    static constexpr const char* kLabels[] = {"other", "volatile", "nonVolatile", "permanent",
                                              "readOnly"};
    return LabelAt(kLabels, eStorageOther, static_cast<int>(value));
}

const char* LabelMaxAccess(EMaxAccess value)
{
    static constexpr const char* kLabels[] = {"none", "notify", "readOnly", "readWrite",
                                              "readCreate"};
    return LabelAt(kLabels, eMaxAccessNone, static_cast<int>(value));
}

const char* LabelSecurityModel(int value)
{
    static constexpr const char* kLabels[] = {"secANY", "secSNMPv1", "secSNMPv2c", "secUSM"};
    // CONTRACT: there is no unknown model: numbers above the standard ones are a user's own.
    return value >= 0 && value < 4 ? kLabels[value] : "secUserDefined";
}

const char* LabelSecurityLevel(ESecurityLevel value)
{
    static constexpr const char* kLabels[] = {"noAuthNoPriv", "authNoPriv", "authPriv"};
    return LabelAt(kLabels, eNoAuthNoPriv, static_cast<int>(value));
}

const char* LabelFilterType(EFilterType value)
{
    static constexpr const char* kLabels[] = {"included", "excluded"};
    return LabelAt(kLabels, eFilterIncluded, static_cast<int>(value));
}

EMaxAccess MaxAccessOf(int access)
{
    switch (access) {
    case eRqReadOnly:
        return eMaxAccessReadOnly;
    case eRqReadWrite:
        return eMaxAccessReadWrite;
    case eRqReadCreate:
        return eMaxAccessReadCreate;
    default:
        return eMaxAccessNone;
    }
}

} // namespace VLK
