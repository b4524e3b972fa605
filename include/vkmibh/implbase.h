// The base of all implementations, and groups of them.
#pragma once

#include <vkmibh/rqmap.h>

namespace VLK {

// Names of the standard textual conventions, for constraint rows.
inline constexpr char cszDateAndTime[] = "DateAndTime";
inline constexpr char cszDisplayString[] = "DisplayString";
inline constexpr char cszMacAddress[] = "MacAddress";
inline constexpr char cszTAddress[] = "TAddress";
inline constexpr char cszTestAndIncr[] = "TestAndIncr";
inline constexpr char cszTimeInterval[] = "TimeInterval";
inline constexpr char cszRowStatus[] = "RowStatus";
inline constexpr char cszStorageType[] = "StorageType";
inline constexpr char cszTruthValue[] = "TruthValue";
inline constexpr char cszOwnerString[] = "OwnerString";
inline constexpr char cszEntryStatus[] = "EntryStatus";
inline constexpr char cszSnmpAdminString[] = "SnmpAdminString";
inline constexpr char cszSnmpEngineID[] = "SnmpEngineID";
inline constexpr char cszSnmpSecurityModel[] = "SnmpSecurityModel";
inline constexpr char cszSnmpMessageProcessingModel[] = "SnmpMessageProcessingModel";
inline constexpr char cszSnmpSecurityLevel[] = "SnmpSecurityLevel";
inline constexpr char cszSnmpTagValue[] = "SnmpTagValue";
inline constexpr char cszSnmpTagList[] = "SnmpTagList";

// The holder of an object's DEFVAL; empty until a module derives its own.
class VKMIBH_API BMibDefVal {};

// What serves a region of the MIB from a static map of its objects: finds the
// row of a binding, converts between values on the wire and typed handlers,
// checks types and constraints, and walks instances for GETNEXT. Modules derive
// from one of the classes in scalars.h and tables.h and write handlers only:
//
//   VKMIBH_CONSTINIT SRqHndlrMapEntry CFan::s_map[] = {
//       ColumnRow<eKindUnsigned, &CFan::OnGet_Speed>(2, "fanSpeed", eAsnGauge32, eRqReadOnly),
//       ColumnRow<eKindInteger, &CFan::OnGet_Goal, &CFan::OnSet_Goal>(
//           3, "fanGoal", eAsnInteger, eRqReadWrite),
//       kRqEnd};
//   const SConstraintMapEntry CFan::s_constraints[] = {
//       {eConstraintRange, 3, "", 0, 9000}, kConstraintEnd};
//
// It answers requests only between Initialize() and Cleanup(), else noSuchName.
//
// SET: for every binding the handler sees test, then commit when all tests of
// the request passed, then undo when a commit failed, and cleanup in every case.
// Types and DisplayString bytes are checked in every phase, constraints in the
// test phase only. A binding whose handler was called in the test phase is marked
// tested, in the commit phase committed, whatever the handler returned or threw;
// undo visits only committed bindings and cleanup only tested ones. The slot is
// the handler's own from the first phase to the last, for what it needs to undo.
// A class that overrides the single-binding Set() without ending in the adapter
// sets the marks of its SSetSlot itself.
// In undo and cleanup a failing binding does not keep the ones after it from
// their turn; the first failure is what is reported.
//
// Ownership: the maps belong to the module and outlive the implementation.
// Threads:   the list forms and GetNext() hold Mutex() while handlers run;
//            Initialize() and Cleanup() do not lock, BMibImplGroup does it for
//            them. ResolveConstraints() may run beside requests, not beside
//            SetExtrenalTCConstraints() of the same object.
// Errors:    SNMP error status; look-ups return a pointer or null. What a handler
//            throws is genErr in the list forms and passes through the others.
// Contract:  slot order and field order are ABI.
class VKMIBH_API BMibImpl : public BMibSubtreeHandler {
public:
    // The standard textual conventions.
    static const SConstraintMapEntry s_tcConstraints[];

    BMibImpl(const BString& name, const BObjectIdentifier& oid, unsigned rangePosition = 0,
             unsigned rangeUpperBound = 0);

    // Fills the `constraint` field of the map's rows from the constraint map: the
    // first row for the column that is not an enumeration's item decides.
    void ResolveConstraints();
    // CONTRACT: the spelling is this operation's name; modules call it so.
    void SetExtrenalTCConstraints(const SConstraintMapEntry* conventions);

    // The adapters of one map row. `instance` is null for scalars, `slot` the
    // scratch field of the binding's SSetSlot or null.
    int Get(const SRqHndlrMapEntry* entry, unsigned id, BObjectSyntax& value,
            const BObjectIdentifier* instance);
    int Set(const SRqHndlrMapEntry* entry, unsigned id, ESnmpSetOpCode op, void** slot,
            const BObjectSyntax& value, const BObjectIdentifier* instance);

    bool IsInitialized() const;
    const SRqHndlrMapEntry* FindRqHndlrEntry(unsigned column) const;
    const SRqHndlrMapEntry* FindRqHndlrEntry(const char* name) const;
    const SRqHndlrMapEntry* GetFirstRqHndlrEntry() const;
    // The row after that column, which need not exist, or after that name.
    const SRqHndlrMapEntry* NextRqHndlrEntry(unsigned column) const;
    const SRqHndlrMapEntry* NextRqHndlrEntry(const char* name) const;
    static const SConstraintMapEntry* GetTCConstraintMap() { return s_tcConstraints; }
    // Looks among the standard conventions, then among the external ones.
    const SConstraintMapEntry* FindTCConstraintMapEntry(const char* name) const;

    // Virtual operations in slot order.
    ~BMibImpl() override;
    using BMibSubtreeHandler::GetNext;
    int Get(unsigned id, BVarBindList& list, int& index, int count) override;
    // The next readable instance. One that does not sort after the OID it was
    // asked for ends the walk, as endOfMibView.
    int GetNext(unsigned id, BVarBind& binding) override;
    // `slots` is the slot of the binding at `index`; null is allowed and means
    // that no marks are kept: undo and cleanup then visit every binding.
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;
    IMIBInfo* GetIMibInfo() override;
    BString ToString() override;
    virtual int Get(unsigned id, BVarBind& binding) = 0;
    virtual int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) = 0;
    // Moves the binding to the instance after its OID and returns 1, or returns 0
    // with the value endOfMibView; so too when there is no memory for the OID.
    virtual int NextInstance(unsigned id, BVarBind& binding) = 0;
    virtual void Initialize();
    virtual void Cleanup();
    virtual SRqHndlrMapEntry* GetRqHndlrMap() const;
    virtual const SConstraintMapEntry* GetConstraintMap() const;

protected:
    BMibImpl(const BString& name, const BObjectIdentifier& oid, EImplKind kind,
             unsigned rangePosition = 0, unsigned rangeUpperBound = 0);

private:
    friend struct SLayoutCheck;
    friend struct SRqRows;
    friend class BMibImplGroup;

    // The stored handler of a row; maprows.h.
    template <unsigned Kind, auto Handler>
    VKMIBH_LOCAL int RqGetThunk(const BObjectIdentifier* instance, unsigned id, void* value,
                                int flag);
    template <unsigned Kind, auto Handler>
    VKMIBH_LOCAL int RqSetThunk(const BObjectIdentifier* instance, ESnmpSetOpCode op, unsigned id,
                                const void* value, void** slot);
    void SetInitialized(bool initialized);

    unsigned char m_initialized;
    const SConstraintMapEntry* m_externalConventions;
    BMibInfo m_info;
};

// Implementations that are registered and started together: a MIB module.
//
// Ownership: of its implementations, as the deriving class sees fit.
// Threads:   Init() and Cleanup() hold each implementation's mutex in turn.
// Errors:    Init() returns the number of implementations, below 1 when there is
//            nothing to start.
// Contract:  slot order is ABI.
class VKMIBH_API BMibImplGroup {
public:
    BMibImplGroup() = default;
    explicit BMibImplGroup(const BString& name) : m_name(name) {}
    BMibImplGroup(const BMibImplGroup&) = delete;
    BMibImplGroup& operator=(const BMibImplGroup&) = delete;

    const BString& Name() const { return m_name; }

    // Virtual operations in slot order.
    virtual ~BMibImplGroup();
    virtual int Init();
    virtual void Cleanup();
    virtual int GetNumImpls() = 0;
    // May be null.
    virtual BMibImpl* GetImplAt(int index) = 0;
    // Conventions that all implementations of the group share; null for none.
    virtual const SConstraintMapEntry* GetTCConstraintMap() const;
    // Called first by Init().
    virtual void InitDefVals();

private:
    BString m_name;
};

} // namespace VLK
