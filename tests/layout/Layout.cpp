// Field order and, on 32-bit builds, the exact sizes of the laid-out classes.
// Everything here is decided by the compiler: the file has nothing to run.
#include <vkmibh/vkmibh.h>

#include <cstddef>
#include <initializer_list>
#include <type_traits>

// offsetof works on every class laid out here, though the language promises it
// for standard-layout classes only.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace VLK {

namespace {

constexpr bool k32 = sizeof(void*) == 4;

constexpr bool Ascending(std::initializer_list<std::size_t> offsets)
{
    std::size_t next = 0;
    for (const std::size_t offset : offsets) {
        if (offset < next)
            return false;
        next = offset + 1;
    }
    return true;
}

} // namespace

// The friend of the laid-out classes.
struct SLayoutCheck {
    static void Base();
    static void Values();
    static void Containers();
    static void Timer();
    static void Tree();
    static void Implementations();
    static void Transactions();
    static void Console();
    static void Handler();
    static void System();
    static void Filter();
    static void Traps();
    static void Agents();
    static void Offsets();
};

#define FIELD(type, name) offsetof(type, name)

void SLayoutCheck::Base()
{
    static_assert(
        Ascending({FIELD(BString, m_data), FIELD(BString, m_length), FIELD(BString, m_capacity)}));
    static_assert(offsetof(BString, m_data) == 0);
    static_assert(!std::is_polymorphic_v<BString>);
    static_assert(!k32 || sizeof(BString) == 12);

    static_assert(offsetof(BLinkList, m_first) == 0);
    static_assert(Ascending({FIELD(BLLItem, data), FIELD(BLLItem, link), FIELD(BLLItem, next)}));
    static_assert(!k32 || sizeof(BLLItem) == 12);
    static_assert(sizeof(atomic_t) == 4);
}

void SLayoutCheck::Values()
{
    static_assert(Ascending({FIELD(BObjectIdentifier, m_length), FIELD(BObjectIdentifier, m_arcs),
                             FIELD(BObjectIdentifier, m_capacity)}));
    static_assert(offsetof(BObjectIdentifier, m_length) == offsetof(SASNObjectId, count));
    static_assert(offsetof(BObjectIdentifier, m_arcs) == offsetof(SASNObjectId, arcs));
    static_assert(!std::is_polymorphic_v<BObjectIdentifier>);
    static_assert(!k32 || sizeof(BObjectIdentifier) == 12);

    static_assert(Ascending({FIELD(BOctetString, m_data), FIELD(BOctetString, m_length),
                             FIELD(BOctetString, m_capacity)}));
    static_assert(offsetof(BOctetString, m_data) == offsetof(SASNOctetStr, data));
    static_assert(offsetof(BOctetString, m_length) == offsetof(SASNOctetStr, length));
    static_assert(!std::is_polymorphic_v<BOctetString>);
    static_assert(!k32 || sizeof(BOctetString) == 12);

    static_assert(sizeof(BIpAddress) == 4);
    static_assert(offsetof(SCTR64, high) == 0 && offsetof(SCTR64, low) == 4);
    static_assert(sizeof(SCTR64) == 8 && sizeof(BCounter64) == 8);
    static_assert(std::is_standard_layout_v<BCounter64>);

    static_assert(sizeof(BObjectSyntax::m_syntax) == 1);
    static_assert(Ascending({FIELD(BObjectSyntax, m_syntax), FIELD(BObjectSyntax, m_value)}));
    static_assert(offsetof(BObjectSyntax, m_syntax) == 0);
    static_assert(!std::is_polymorphic_v<BObjectSyntax>);
    static_assert(sizeof(BObjectSyntax::UValue) == sizeof(BOctetString) ||
                  sizeof(BObjectSyntax::UValue) == sizeof(BObjectIdentifier));
    static_assert(!k32 || sizeof(BObjectSyntax::UValue) == 12);
    static_assert(!k32 || sizeof(BObjectSyntax) == 16);

    static_assert(Ascending({FIELD(BVarBind, m_name), FIELD(BVarBind, m_value)}));
    static_assert(offsetof(BVarBind, m_name) == 0);
    static_assert(!std::is_polymorphic_v<BVarBind>);
    static_assert(!k32 || sizeof(BVarBind) == 28);

    static_assert(Ascending({FIELD(BVarBindList, m_bindings), FIELD(BVarBindList, m_count),
                             FIELD(BVarBindList, m_capacity)}));
    static_assert(offsetof(BVarBindList, m_bindings) == 0);
    static_assert(!std::is_polymorphic_v<BVarBindList>);
    static_assert(!k32 || sizeof(BVarBindList) == 12);
}

#define ITEMS_COUNT_CAPACITY(type)                                                                 \
    static_assert(                                                                                 \
        Ascending({FIELD(type, m_items), FIELD(type, m_count), FIELD(type, m_capacity)}));         \
    static_assert(sizeof(type::m_count) == 4 && sizeof(type::m_capacity) == 4)

void SLayoutCheck::Containers()
{
    ITEMS_COUNT_CAPACITY(BPtrArray);
    ITEMS_COUNT_CAPACITY(BUintArray);
    ITEMS_COUNT_CAPACITY(BStringArray);
    ITEMS_COUNT_CAPACITY(BOidArray);
    ITEMS_COUNT_CAPACITY(BMapInt2Ptr);
    ITEMS_COUNT_CAPACITY(BMapStr2Ptr);
    ITEMS_COUNT_CAPACITY(BMapOid2Ptr);
    static_assert(std::is_polymorphic_v<BStringArray>);
    static_assert(!std::is_polymorphic_v<BPtrArray> && !std::is_polymorphic_v<BUintArray> &&
                  !std::is_polymorphic_v<BOidArray> && !std::is_polymorphic_v<BMapInt2Ptr> &&
                  !std::is_polymorphic_v<BMapStr2Ptr> && !std::is_polymorphic_v<BMapOid2Ptr>);
    static_assert(!k32 || (sizeof(BPtrArray) == 12 && sizeof(BUintArray) == 12 &&
                           sizeof(BStringArray) == 16 && sizeof(BOidArray) == 12 &&
                           sizeof(BMapInt2Ptr) == 12 && sizeof(BMapStr2Ptr) == 12 &&
                           sizeof(BMapOid2Ptr) == 12));

    static_assert(Ascending({FIELD(BMapInt2Ptr::SItem, key), FIELD(BMapInt2Ptr::SItem, data)}));
    static_assert(Ascending({FIELD(BMapStr2Ptr::SItem, key), FIELD(BMapStr2Ptr::SItem, data)}));
    static_assert(Ascending({FIELD(BMapOid2Ptr::SItem, key), FIELD(BMapOid2Ptr::SItem, data)}));

    // The size constants describe the 32-bit items.
    static_assert(!k32 || (sizeof(void*) == BPtrArray::s_voidPtrSize &&
                           sizeof(unsigned) == BUintArray::s_intSize &&
                           sizeof(BString) == BStringArray::s_strSize &&
                           sizeof(BObjectIdentifier) == BOidArray::s_oidSize &&
                           sizeof(BMapInt2Ptr::SItem) == BMapInt2Ptr::s_itemSize &&
                           sizeof(BMapStr2Ptr::SItem) == BMapStr2Ptr::s_itemSize &&
                           sizeof(BMapOid2Ptr::SItem) == BMapOid2Ptr::s_itemSize));
}

void SLayoutCheck::Timer()
{
    static_assert(Ascending({FIELD(BTime::SInstant, seconds), FIELD(BTime::SInstant, milliseconds),
                             FIELD(BTime::SInstant, timeZone), FIELD(BTime::SInstant, daylight)}));
    static_assert(offsetof(BTime, m_start) == 0);
    static_assert(sizeof(BTime::SInstant::seconds) == 4 &&
                  sizeof(BTime::SInstant::milliseconds) == 2);
    static_assert(sizeof(BTime) == 12);

    static_assert(Ascending({FIELD(BTimeInterval, interval), FIELD(BTimeInterval, count),
                             FIELD(BTimeInterval, id), FIELD(BTimeInterval, subscriber),
                             FIELD(BTimeInterval, remaining)}));
    static_assert(!k32 || sizeof(BTimeInterval) == 20);

    static_assert(Ascending(
        {FIELD(BTimer, m_lock), FIELD(BTimer, m_subscriptions), FIELD(BTimer, m_thread)}));
    static_assert(offsetof(BTimer, m_lock) == sizeof(BSingleton));
}

void SLayoutCheck::Tree()
{
    static_assert(Ascending({FIELD(BMibNode, m_id), FIELD(BMibNode, m_parent),
                             FIELD(BMibNode, m_firstChild), FIELD(BMibNode, m_nextSibling),
                             FIELD(BMibNode, m_handlers), FIELD(BMibNode, m_name)}));
    static_assert(offsetof(BMibNode, m_id) == sizeof(void*));
    static_assert(offsetof(BMibTree, m_top) == sizeof(void*));

    static_assert(Ascending(
        {FIELD(BMibSubtreeHandler, m_name), FIELD(BMibSubtreeHandler, m_oid),
         FIELD(BMibSubtreeHandler, m_rangePosition), FIELD(BMibSubtreeHandler, m_rangeUpperBound),
         FIELD(BMibSubtreeHandler, m_implKind), FIELD(BMibSubtreeHandler, m_mutex)}));
    static_assert(offsetof(BMibSubtreeHandler, m_name) == sizeof(void*));

    static_assert(
        Ascending({FIELD(SSetSlot, scratch), FIELD(SSetSlot, position), FIELD(SSetSlot, tested),
                   FIELD(SSetSlot, committed), FIELD(SSetSlot, owner)}));
    static_assert(offsetof(SSetSlot, scratch) == 0);
    static_assert(!k32 || sizeof(SSetSlot) == 16);
}

void SLayoutCheck::Implementations()
{
    static_assert(Ascending(
        {FIELD(BMibInfo, m_owner), FIELD(BMibInfo, m_moduleName), FIELD(BMibInfo, m_objectName)}));
    static_assert(!k32 || sizeof(BMibInfo) == 32);
    static_assert(Ascending({FIELD(BMibObject, kind), FIELD(BMibObject, oid),
                             FIELD(BMibObject, name), FIELD(BMibObject, module),
                             FIELD(BMibObject, syntax), FIELD(BMibObject, syntaxName),
                             FIELD(BMibObject, access), FIELD(BMibObject, info)}));
    static_assert(!k32 || sizeof(BMibObject) == 64);

    static_assert(Ascending({FIELD(SConstraintMapEntry, kind), FIELD(SConstraintMapEntry, column),
                             FIELD(SConstraintMapEntry, name), FIELD(SConstraintMapEntry, low),
                             FIELD(SConstraintMapEntry, high)}));
    static_assert(!k32 || sizeof(SConstraintMapEntry) == 20);
    static_assert(
        Ascending({FIELD(SRqHndlrMapEntry, column), FIELD(SRqHndlrMapEntry, name),
                   FIELD(SRqHndlrMapEntry, syntax), FIELD(SRqHndlrMapEntry, access),
                   FIELD(SRqHndlrMapEntry, kind), FIELD(SRqHndlrMapEntry, constraint),
                   FIELD(SRqHndlrMapEntry, getHandler), FIELD(SRqHndlrMapEntry, setHandler)}));
    static_assert(!k32 || sizeof(SRqHndlrMapEntry) == 40);

    static_assert(Ascending({FIELD(BMibImpl, m_initialized), FIELD(BMibImpl, m_externalConventions),
                             FIELD(BMibImpl, m_info)}));
    static_assert(sizeof(BMibImpl::m_initialized) == 1);
    static_assert(sizeof(BMibScalarImpl) == sizeof(BMibImpl));
    static_assert(sizeof(BMibScalarGroupImpl) == sizeof(BMibImpl));
    static_assert(sizeof(BMibTableImpl) == sizeof(BMibImpl));
    static_assert(
        Ascending({sizeof(BMibTableImpl) - 1, FIELD(BMibTableImplEx, m_activationTimeout),
                   FIELD(BMibTableImplEx, m_rowStates), FIELD(BMibTableImplEx, m_timeoutList),
                   FIELD(BMibTableImplEx, m_lastRowStatus),
                   FIELD(BMibTableImplEx, m_lastEntryStatus), FIELD(BMibTableImplEx, m_many)}));
    static_assert(sizeof(BMibTableImplEx2) == sizeof(BMibTableImplEx));
    using RowState = BMibTableImplEx::RowState;
    static_assert(
        Ascending({FIELD(RowState, kind), FIELD(RowState, opCode), FIELD(RowState, undoValue),
                   FIELD(RowState, newValue), FIELD(RowState, requestedValue)}));
    static_assert(sizeof(RowState) == 20 && std::is_trivial_v<RowState>);
    static_assert(Ascending({FIELD(BMibRowImpl, m_rangePrefix), FIELD(BMibRowImpl, m_low),
                             FIELD(BMibRowImpl, m_high), FIELD(BMibRowImpl, m_indexSuffix)}));
    static_assert(std::is_default_constructible_v<BMibDefVal> && std::is_empty_v<BMibDefVal>);
}

void SLayoutCheck::Transactions()
{
    static_assert(
        Ascending({FIELD(BSecurityParams, securityModel), FIELD(BSecurityParams, securityName),
                   FIELD(BSecurityParams, securityLevel)}));
    static_assert(!k32 || sizeof(BSecurityParams) == 20);
    static_assert(Ascending(
        {FIELD(BTransactionParameters, protocolId), FIELD(BTransactionParameters, pduType),
         FIELD(BTransactionParameters, request), FIELD(BTransactionParameters, securityModel),
         FIELD(BTransactionParameters, securityName), FIELD(BTransactionParameters, securityLevel),
         FIELD(BTransactionParameters, contextName)}));
    static_assert(!k32 || sizeof(BTransactionParameters) == 44);

    static_assert(offsetof(BTransaction, m_protocolId) == sizeof(void*));
    static_assert(Ascending({FIELD(BTransactions, m_lock), FIELD(BTransactions, m_entries),
                             FIELD(BTransactions, m_capacity)}));
    static_assert(offsetof(BTransactions, m_lock) == sizeof(BSingleton));
    // CONTRACT: with a map and a lock that nobody uses.
    static_assert(sizeof(BMibHandler::Transactions) >=
                  sizeof(ITransactions) + sizeof(BMapInt2Ptr) + sizeof(TMutex));
    static_assert(
        Ascending({FIELD(BTransactions::SEntry, id), FIELD(BTransactions::SEntry, transaction)}));
    static_assert(sizeof(BTransactions::m_capacity) == 4);
}

void SLayoutCheck::Console()
{
    static_assert(
        Ascending({FIELD(SCmdMapEntry, id), FIELD(SCmdMapEntry, name),
                   FIELD(SCmdMapEntry, description), FIELD(SCmdMapEntry, argsDescription)}));
    static_assert(!k32 || sizeof(SCmdMapEntry) == 16);
    static_assert(sizeof(BCmdHandler) == sizeof(void*));

    static_assert(Ascending({FIELD(BCmdLineParser, command), FIELD(BCmdLineParser, args)}));
    static_assert(offsetof(BCmdLineParser, command) == 0);
    static_assert(!std::is_polymorphic_v<BCmdLineParser>);
    static_assert(!k32 || sizeof(BCmdLineParser) == 28);

    static_assert(sizeof(BCmdStream) == sizeof(void*));
    static_assert(sizeof(BCLI::Commands) == sizeof(BMapStr2Ptr));
    static_assert(
        Ascending({FIELD(BCLI, m_commands), FIELD(BCLI, m_handler), FIELD(BCLI, m_security),
                   FIELD(BCLI, m_contextName), FIELD(BCLI, m_reserved), FIELD(BCLI, m_quitName),
                   FIELD(BCLI, m_listName), FIELD(BCLI, m_helpName), FIELD(BCLI, m_vacmName),
                   FIELD(BCLI, m_defaultStream), FIELD(BCLI, m_stream)}));
    static_assert(offsetof(BCLI, m_commands) == 0);
    static_assert(!std::is_polymorphic_v<BCLI>);
    static_assert(!k32 || sizeof(BCLI) == 116);
}

void SLayoutCheck::Handler()
{
    static_assert(Ascending({FIELD(BMibHandler, m_ownsTree), FIELD(BMibHandler, m_accessControl),
                             FIELD(BMibHandler, m_tree), FIELD(BMibHandler, m_registrationLock),
                             FIELD(BMibHandler, m_setLock), FIELD(BMibHandler, m_system),
                             FIELD(BMibHandler, m_systemImpl), FIELD(BMibHandler, m_sysORImpl),
                             FIELD(BMibHandler, m_transactions)}));
    // The vtable pointers of both bases come first.
    static_assert(offsetof(BMibHandler, m_ownsTree) == 2 * sizeof(void*));

    using SConsole = BMibHandler::BCLITransaction;
    static_assert(Ascending({FIELD(BTransaction, m_protocolId), FIELD(SConsole, m_pduType),
                             FIELD(SConsole, m_securityModel), FIELD(SConsole, m_securityName),
                             FIELD(SConsole, m_securityLevel), FIELD(SConsole, m_contextName),
                             FIELD(SConsole, m_request), FIELD(SConsole, m_localAddress)}));
    static_assert(offsetof(SConsole, m_pduType) == sizeof(void*) + sizeof(int));
    static_assert(sizeof(SConsole::m_localAddress) == 4);
    static_assert(!k32 || sizeof(SConsole) == 52);
}

void SLayoutCheck::System()
{
    static_assert(Ascending({FIELD(BMib2System, m_store), FIELD(BMib2System, m_time),
                             FIELD(BMib2System, m_description), FIELD(BMib2System, m_objectId),
                             FIELD(BMib2System, m_contact), FIELD(BMib2System, m_name),
                             FIELD(BMib2System, m_location), FIELD(BMib2System, m_services),
                             FIELD(BMib2System, m_orLastChange), FIELD(BMib2System, m_orRows)}));
    static_assert(offsetof(BMib2System, m_store) == 0);
    static_assert(
        Ascending({FIELD(BMib2System::SysOREntry, index), FIELD(BMib2System::SysOREntry, id),
                   FIELD(BMib2System::SysOREntry, descr), FIELD(BMib2System::SysOREntry, upTime)}));
    static_assert(!k32 || sizeof(BMib2System::SysOREntry) == 32);
}

void SLayoutCheck::Filter()
{
    using Entry = BFilterTable::Entry;
    static_assert(
        Ascending({FIELD(Entry, viewName), FIELD(Entry, subtree), FIELD(Entry, mask),
                   FIELD(Entry, type), FIELD(Entry, storageType), FIELD(Entry, rowStatus)}));
    static_assert(offsetof(Entry, viewName) == 0);
    static_assert(!std::is_polymorphic_v<Entry>);
    static_assert(!k32 || sizeof(Entry) == 48);

    static_assert(Ascending({sizeof(BMapOid2Ptr) - 1, FIELD(BFilterTable, m_store),
                             FIELD(BFilterTable, m_section), FIELD(BFilterTable, m_lock)}));
    static_assert(offsetof(BFilterTable, m_store) == sizeof(BMapOid2Ptr));
    static_assert(!std::is_polymorphic_v<BFilterTable>);
}

void SLayoutCheck::Traps()
{
    static_assert(sizeof(ESNMPv1TrapType) == 4);
    static_assert(
        Ascending({FIELD(BTrapOIDs, m_sysUpTime), FIELD(BTrapOIDs, m_snmpGroup),
                   FIELD(BTrapOIDs, m_snmpTrapOid), FIELD(BTrapOIDs, m_snmpTrapEnterprise),
                   FIELD(BTrapOIDs, m_snmpTraps), FIELD(BTrapOIDs, m_standard)}));
    static_assert(offsetof(BTrapOIDs, m_sysUpTime) == sizeof(BSingleton));
    static_assert(sizeof(BTrapOIDs::m_standard) == 6 * sizeof(BObjectIdentifier));
    static_assert(sizeof(BTrapOIDs) == sizeof(BSingleton) + 11 * sizeof(BObjectIdentifier));

    static_assert(Ascending({FIELD(BTrap, m_bindings), FIELD(BTrap, m_isWhole)}));
    static_assert(offsetof(BTrap, m_bindings) == sizeof(void*));
    static_assert(Ascending(
        {FIELD(BTrapV1, m_enterprise), FIELD(BTrapV1, m_generic), FIELD(BTrapV1, m_specific)}));
    static_assert(offsetof(BTrapV1, m_enterprise) == sizeof(BTrap));
    static_assert(offsetof(BTrapV2, m_trapOid) == sizeof(BTrap));
}

void SLayoutCheck::Agents()
{
    static_assert(sizeof(ITrapSender) == sizeof(void*) && sizeof(BAgent) == sizeof(void*));
    static_assert(Ascending({FIELD(BAgents, m_agents), FIELD(BAgents, m_time)}));
    // The vtable pointers of both bases come first.
    static_assert(offsetof(BAgents, m_agents) == 2 * sizeof(void*));
    static_assert(!k32 || sizeof(BAgents) == 24);
}

// On a 32-bit build fields stand where they always stood, up to the first whose size
// is the build's own affair (a lock, the list).
#define AT(type, name, offset)                                                                     \
    static_assert(!k32 || offsetof(type, name) == (offset), #type "::" #name)

void SLayoutCheck::Offsets()
{
    AT(BString, m_length, 4);
    AT(BString, m_capacity, 8);
    AT(BObjectIdentifier, m_arcs, 4);
    AT(BObjectIdentifier, m_capacity, 8);
    AT(BOctetString, m_length, 4);
    AT(BOctetString, m_capacity, 8);
    AT(BObjectSyntax, m_value, 4);
    AT(BVarBind, m_value, 12);
    AT(BVarBindList, m_count, 4);
    AT(BStringArray, m_items, 4);
    AT(BMapStr2Ptr::SItem, data, 12);

    AT(BTime::SInstant, milliseconds, 4);
    AT(BTime::SInstant, timeZone, 6);
    AT(BTime::SInstant, daylight, 8);
    AT(BTimeInterval, subscriber, 12);
    AT(BTimer, m_lock, 4);

    AT(BMibNode, m_id, 4);
    AT(BMibNode, m_parent, 8);
    AT(BMibNode, m_firstChild, 12);
    AT(BMibNode, m_nextSibling, 16);
    AT(BMibNode, m_handlers, 20);
    AT(BMibSubtreeHandler, m_name, 4);
    AT(BMibSubtreeHandler, m_oid, 16);
    AT(BMibSubtreeHandler, m_rangePosition, 28);
    AT(BMibSubtreeHandler, m_rangeUpperBound, 32);
    AT(BMibSubtreeHandler, m_implKind, 36);
    AT(BMibSubtreeHandler, m_mutex, 40);
    AT(SSetSlot, position, 4);
    AT(SSetSlot, tested, 8);
    AT(SSetSlot, committed, 9);
    AT(SSetSlot, owner, 12);

    AT(BMibInfo, m_owner, 4);
    AT(BMibInfo, m_objectName, 20);
    AT(BMibObject, oid, 4);
    AT(BMibObject, name, 16);
    AT(BMibObject, module, 28);
    AT(BMibObject, syntax, 40);
    AT(BMibObject, syntaxName, 44);
    AT(BMibObject, access, 56);
    AT(BMibObject, info, 60);
    AT(SRqHndlrMapEntry, kind, 16);
    AT(SRqHndlrMapEntry, getHandler, 24);
    AT(SRqHndlrMapEntry, setHandler, 32);
    AT(SConstraintMapEntry, high, 16);
    // The implementations' own fields go on behind those of their base.
    AT(BMibImpl, m_initialized, sizeof(BMibSubtreeHandler));
    AT(BMibTableImplEx, m_activationTimeout, sizeof(BMibTableImpl));
    AT(BMibTableImplEx, m_rowStates, sizeof(BMibTableImpl) + 4);
    AT(BMibTableImplEx, m_timeoutList, sizeof(BMibTableImpl) + 16);
    AT(BMibTableImplEx, m_lastRowStatus, sizeof(BMibTableImpl) + 28);
    AT(BMibTableImplEx, m_lastEntryStatus, sizeof(BMibTableImpl) + 32);
    AT(BMibRowImpl, m_rangePrefix, sizeof(BMibImpl));
    AT(BMibRowImpl, m_low, sizeof(BMibImpl) + 12);
    AT(BMibRowImpl, m_high, sizeof(BMibImpl) + 16);
    AT(BMibRowImpl, m_indexSuffix, sizeof(BMibImpl) + 20);
    AT(CSystem, m_system, sizeof(BMibScalarGroupImpl));
    AT(CSystem, m_callback, sizeof(BMibScalarGroupImpl) + 4);
    static_assert(sizeof(CSystem::NVCallback) == 2 * sizeof(void*));
    static_assert(sizeof(CSystemV2) == sizeof(CSystem));

    AT(BTransaction, m_protocolId, 4);
    AT(BTransactions, m_lock, 4);
    AT(BTransactions::SEntry, transaction, 4);
    AT(BTransactionIdGenerator, m_counter, 4);
    static_assert(!k32 || sizeof(BTransactionIdGenerator) == 8);
    AT(BMibHandler, m_ownsTree, 8);
    AT(BMibHandler, m_accessControl, 12);
    AT(BMibHandler, m_tree, 16);
    AT(BMibHandler, m_registrationLock, 20);

    AT(BMib2System, m_time, 4);
    AT(BMib2System, m_description, 8);
    AT(BMib2System, m_objectId, 20);
    AT(BMib2System, m_contact, 32);
    AT(BMib2System, m_name, 44);
    AT(BMib2System, m_location, 56);
    AT(BMib2System, m_services, 68);
    AT(BMib2System, m_orLastChange, 72);
    AT(BMib2System, m_orRows, 76);
    AT(BFilterTable, m_store, 12);
    AT(BFilterTable, m_section, 16);
    AT(BCmdLineParser, args, 12);
    AT(BCLI, m_handler, 12);
    AT(BCLI, m_security, 16);
    AT(BCLI, m_contextName, 36);
    AT(BCLI, m_quitName, 60);
    AT(BCLI, m_stream, 112);
    AT(BTrapOIDs, m_snmpTraps, 52);
    AT(BAgents, m_time, 20);
}

// Interfaces hold nothing.
template <class... T>
constexpr bool kHoldNothing = ((sizeof(T) == sizeof(void*)) && ...);
static_assert(kHoldNothing<BSingleton, ITimeSubscriber, ITransactions, IMIBInfo, IMIBHandler,
                           IAccessControl, INVCallback, INonVolatile, ICmdStream, ICmdHandler>);

// What hangs in lists and maps by its address is not copied.
template <class... T>
constexpr bool kStaysInPlace = ((!std::is_copy_constructible_v<T> &&
                                 !std::is_copy_assignable_v<T> &&
                                 !std::is_move_constructible_v<T>)&&...);

static_assert(
    kStaysInPlace<BMibTree, BMibNode, BMibSubtreeHandler, BMibImpl, BMibImplGroup, BMibInfo>);
static_assert(
    kStaysInPlace<BMibHandler, BMib2System, BTransactions, BTransactionIdGenerator, BTimer>);
static_assert(kStaysInPlace<BMapInt2Ptr, BMapStr2Ptr, BMapOid2Ptr, BPtrArray, BLinkList>);
static_assert(kStaysInPlace<BCLI, BCLI::Commands>);
static_assert(kStaysInPlace<BFilterTable, BTrapOIDs, BTrapV1, BTrapV2, BAgents>);
static_assert(kStaysInPlace<TMutex, TEvent, TSWMRSynch, TThread>);

} // namespace VLK
