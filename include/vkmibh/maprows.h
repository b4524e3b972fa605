// Writing the rows of a request-handler map so that the compiler checks them.
//
//   ScalarRow<eKindDisplayString, &CSystem::OnGet_SysContact, &CSystem::OnSet_SysContact>(
//       4, "sysContact", eAsnOctetString, eRqReadWrite)
//   ColumnRow<eKindObjectId, &COrTable::OnGet_Id>(2, "sysORID", eAsnObjectId, eRqReadOnly)
//   ColumnRow<eKindInteger>(1, "sysORIndex", eAsnInteger, eRqNotAccessible)
//   ColumnRow<eKindInteger, nullptr, &CDoor::OnSet_Key>(9, "key", eAsnInteger, eRqWriteOnly)
//   kRqEnd
//
// V is the type named beside the kind in rqmap.h, or for eKindEnumerated an
// enumeration that can hold every int: `enum E : int`. Handlers return an SNMP
// error status, and are
//
//   ScalarRow get  int (unsigned id, V& value)
//             set  int (ESnmpSetOpCode op, unsigned id, V value, void** slot)
//   ColumnRow get  int (const BObjectIdentifier& instance, unsigned id, V& value)
//             set  int (const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
//                       V value, void** slot)
//   status columns (kinds 8 and 9) get with a last parameter, int flag.
//
// A set handler takes the value by V or const V&; take strings and identifiers by
// const V&, for a copy that finds no memory is empty. Handlers may be const,
// noexcept and non-public. `slot` is null when the caller keeps no slots.
// Everything here is constant-initialised; anything that does not fit does not
// compile.
#pragma once

#include <vkmibh/scalars.h>
#include <vkmibh/tables.h>

#include <type_traits>

namespace VLK {

// Ends a map.
inline constexpr SRqHndlrMapEntry kRqEnd{};
constexpr SRqHndlrMapEntry RqEnd() { return {}; }

// The type that the stored handlers of a kind are given.
template <unsigned Kind>
struct TRqValue;
template <>
struct TRqValue<eKindInteger> {
    using Type = int;
};
template <>
struct TRqValue<eKindOctetString> {
    using Type = BOctetString;
};
template <>
struct TRqValue<eKindObjectId> {
    using Type = BObjectIdentifier;
};
template <>
struct TRqValue<eKindUnsigned> {
    using Type = unsigned;
};
template <>
struct TRqValue<eKindDisplayString> {
    using Type = BString;
};
template <>
struct TRqValue<eKindIpAddress> {
    using Type = BIpAddress;
};
template <>
struct TRqValue<eKindCounter64> {
    using Type = BCounter64;
};
template <>
struct TRqValue<eKindRowStatus> {
    using Type = ERowStatus;
};
template <>
struct TRqValue<eKindEntryStatus> {
    using Type = EEntryStatus;
};
template <>
struct TRqValue<eKindEnumerated> {
    using Type = int;
};

// A handler's class, and its parameters without const and noexcept.
template <class Function>
struct TRqPlain {
    using Type = void;
};
template <class R, class... A>
struct TRqPlain<R(A...)> {
    using Type = R(A...);
};
template <class R, class... A>
struct TRqPlain<R(A...) const> {
    using Type = R(A...);
};
template <class R, class... A>
struct TRqPlain<R(A...) noexcept> {
    using Type = R(A...);
};
template <class R, class... A>
struct TRqPlain<R(A...) const noexcept> {
    using Type = R(A...);
};
template <class Handler>
struct TRqHandler {
    using Class = void;
    using Plain = void;
};
template <class Function, class C>
struct TRqHandler<Function C::*> {
    using Class = C;
    using Plain = typename TRqPlain<Function>::Type;
};

// Which of the known forms a handler has, and its value type.
enum ERqForm { eRqFormUnknown, eRqFormScalar, eRqFormColumn, eRqFormStatus };
template <class Plain>
struct TRqGetForm {
    static constexpr ERqForm kForm = eRqFormUnknown;
    using Value = void;
};
template <class V>
struct TRqGetForm<int(unsigned, V&)> {
    static constexpr ERqForm kForm = eRqFormScalar;
    using Value = V;
};
template <class V>
struct TRqGetForm<int(const BObjectIdentifier&, unsigned, V&)> {
    static constexpr ERqForm kForm = eRqFormColumn;
    using Value = V;
};
template <class V>
struct TRqGetForm<int(const BObjectIdentifier&, unsigned, V&, int)> {
    static constexpr ERqForm kForm = eRqFormStatus;
    using Value = V;
};
template <class V>
struct TRqSetValue {
    using Type = V;
};
template <class V>
struct TRqSetValue<const V&> {
    using Type = V;
};
template <class Plain>
struct TRqSetForm {
    static constexpr ERqForm kForm = eRqFormUnknown;
    using Value = void;
};
template <class V>
struct TRqSetForm<int(ESnmpSetOpCode, unsigned, V, void**)> {
    static constexpr ERqForm kForm = eRqFormScalar;
    using Value = typename TRqSetValue<V>::Type;
};
template <class V>
struct TRqSetForm<int(const BObjectIdentifier&, ESnmpSetOpCode, unsigned, V, void**)> {
    static constexpr ERqForm kForm = eRqFormColumn;
    using Value = typename TRqSetValue<V>::Type;
};

// Whether any int can become an E and back, so that a handler is given the very
// value that was sent. Only an enumeration whose underlying type is written down
// can be made from an int in braces.
template <class E, class = void>
struct TRqHoldsInts : std::false_type {
};
template <class E>
struct TRqHoldsInts<E, std::void_t<decltype(E{std::underlying_type_t<E>()})>>
    : std::bool_constant<sizeof(E) >= sizeof(int)> {
};
template <unsigned Kind, class V>
constexpr bool RqValueSuits()
{
    if constexpr (Kind == eKindEnumerated && std::is_enum_v<V>)
        return TRqHoldsInts<V>::value;
    else
        return std::is_same_v<V, typename TRqValue<Kind>::Type>;
}

template <unsigned Kind, auto Handler>
int BMibImpl::RqGetThunk(const BObjectIdentifier* instance, unsigned id, void* value, int flag)
{
    using C = typename TRqHandler<decltype(Handler)>::Class;
    using Form = TRqGetForm<typename TRqHandler<decltype(Handler)>::Plain>;
    using V = typename Form::Value;
    using Stored = typename TRqValue<Kind>::Type;

    [[maybe_unused]] const int unused = flag;
    if (Form::kForm != eRqFormScalar && !instance)
        return eSnmpGenErr;
    auto call = [&](V& typed) -> int {
        C* self = static_cast<C*>(this);
        if constexpr (Form::kForm == eRqFormScalar)
            return (self->*Handler)(id, typed);
        else if constexpr (Form::kForm == eRqFormColumn)
            return (self->*Handler)(*instance, id, typed);
        else
            return (self->*Handler)(*instance, id, typed, flag);
    };
    Stored& stored = *static_cast<Stored*>(value);
    if constexpr (std::is_same_v<V, Stored>) {
        return call(stored);
    } else {
        V typed = static_cast<V>(stored);
        const int status = call(typed);
        stored = static_cast<Stored>(typed);
        return status;
    }
}

template <unsigned Kind, auto Handler>
int BMibImpl::RqSetThunk(const BObjectIdentifier* instance, ESnmpSetOpCode op, unsigned id,
                         const void* value, void** slot)
{
    using C = typename TRqHandler<decltype(Handler)>::Class;
    using Form = TRqSetForm<typename TRqHandler<decltype(Handler)>::Plain>;
    using V = typename Form::Value;
    using Stored = typename TRqValue<Kind>::Type;

    C* self = static_cast<C*>(this);
    const Stored& stored = *static_cast<const Stored*>(value);
    if constexpr (Form::kForm == eRqFormScalar) {
        if constexpr (std::is_same_v<V, Stored>)
            return (self->*Handler)(op, id, stored, slot);
        else
            return (self->*Handler)(op, id, static_cast<V>(stored), slot);
    } else {
        if (!instance)
            return eSnmpGenErr;
        if constexpr (std::is_same_v<V, Stored>)
            return (self->*Handler)(*instance, op, id, stored, slot);
        else
            return (self->*Handler)(*instance, op, id, static_cast<V>(stored), slot);
    }
}

// Checks handlers and turns them into their stored form.
struct SRqRows {
    template <class Handler, bool InColumn>
    static constexpr bool ClassSuits()
    {
        using C = typename TRqHandler<Handler>::Class;
        constexpr bool ours = std::is_base_of_v<BMibImpl, C>;
        constexpr bool fits = InColumn ? !std::is_base_of_v<BMibScalarImpl, C> &&
                                             !std::is_base_of_v<BMibScalarGroupImpl, C> &&
                                             !std::is_base_of_v<BMibRowImpl, C>
                                       : !std::is_base_of_v<BMibTableImpl, C>;
        static_assert(ours, "map row: the handler is no member of a class derived from BMibImpl");
        static_assert(InColumn || fits, "ScalarRow: the handler belongs to a table, use ColumnRow");
        static_assert(!InColumn || fits,
                      "ColumnRow: the handler belongs to scalars or to a row, use ScalarRow");
        return ours && fits;
    }

    template <unsigned Kind, auto Handler, bool InColumn>
    static constexpr FRqGetHandler Getter()
    {
        if constexpr (std::is_null_pointer_v<decltype(Handler)>) {
            return nullptr;
        } else {
            using Form = TRqGetForm<typename TRqHandler<decltype(Handler)>::Plain>;
            constexpr ERqForm wanted = !InColumn              ? eRqFormScalar
                                       : RqIsStatusKind(Kind) ? eRqFormStatus
                                                              : eRqFormColumn;
            constexpr bool form = Form::kForm == wanted;
            constexpr bool value = !form || RqValueSuits<Kind, typename Form::Value>();
            static_assert(InColumn || form,
                          "ScalarRow: a get handler is int (unsigned id, V& value)");
            static_assert(!InColumn || RqIsStatusKind(Kind) || form,
                          "ColumnRow: a get handler is int (const BObjectIdentifier& instance, "
                          "unsigned id, V& value)");
            static_assert(!InColumn || !RqIsStatusKind(Kind) || form,
                          "ColumnRow: a status column's get handler is int (const "
                          "BObjectIdentifier& instance, unsigned id, V& value, int flag)");
            static_assert(value, "map row: the get handler's value type does not suit the kind");
            if constexpr (ClassSuits<decltype(Handler), InColumn>() && form && value)
                return &BMibImpl::RqGetThunk<Kind, Handler>;
            else
                return nullptr;
        }
    }

    template <unsigned Kind, auto Handler, bool InColumn>
    static constexpr FRqSetHandler Setter()
    {
        if constexpr (std::is_null_pointer_v<decltype(Handler)>) {
            return nullptr;
        } else {
            using Form = TRqSetForm<typename TRqHandler<decltype(Handler)>::Plain>;
            constexpr bool form = Form::kForm == (InColumn ? eRqFormColumn : eRqFormScalar);
            constexpr bool value = !form || RqValueSuits<Kind, typename Form::Value>();
            static_assert(InColumn || form,
                          "ScalarRow: a set handler is int (ESnmpSetOpCode op, unsigned id, "
                          "V value, void** slot)");
            static_assert(!InColumn || form,
                          "ColumnRow: a set handler is int (const BObjectIdentifier& instance, "
                          "ESnmpSetOpCode op, unsigned id, V value, void** slot)");
            static_assert(value, "map row: the set handler's value type does not suit the kind");
            if constexpr (ClassSuits<decltype(Handler), InColumn>() && form && value)
                return &BMibImpl::RqSetThunk<Kind, Handler>;
            else
                return nullptr;
        }
    }

    template <unsigned Kind, auto Get, auto Set, bool InColumn>
    static constexpr SRqHndlrMapEntry Make(unsigned column, const char* name, EAsnSyntax syntax,
                                           ERqAccess access)
    {
        static_assert(Kind >= eKindInteger && Kind <= kRqLastKind, "map row: no such kind");
        static_assert(InColumn || !RqIsStatusKind(Kind), "ScalarRow: a status kind needs a column");
        return {column,
                name,
                syntax,
                access,
                Kind,
                nullptr,
                Getter<Kind, Get, InColumn>(),
                Setter<Kind, Set, InColumn>()};
    }
};

// The row of a scalar, or of a column of a BMibRowImpl.
template <ERqHandlerKind Kind, auto Get = nullptr, auto Set = nullptr>
constexpr SRqHndlrMapEntry ScalarRow(unsigned column, const char* name, EAsnSyntax syntax,
                                     ERqAccess access)
{
    return SRqRows::Make<Kind, Get, Set, false>(column, name, syntax, access);
}

// The row of a table's column.
template <ERqHandlerKind Kind, auto Get = nullptr, auto Set = nullptr>
constexpr SRqHndlrMapEntry ColumnRow(unsigned column, const char* name, EAsnSyntax syntax,
                                     ERqAccess access)
{
    return SRqRows::Make<Kind, Get, Set, true>(column, name, syntax, access);
}

} // namespace VLK
