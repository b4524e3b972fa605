// The implementation framework: groups, scalars, tables and rows.
#pragma once

#include <vkmibh/rqmap.h>

#include <type_traits>

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

class VKMIBH_API BMibDefVal {};

class VKMIBH_API BMibImpl : public BMibSubtreeHandler {
public:
    static const SConstraintMapEntry s_tcConstraints[];

    BMibImpl(const BString& name, const BObjectIdentifier& oid, unsigned rangePosition = 0,
             unsigned rangeUpperBound = 0);
    ~BMibImpl() override;

    using BMibSubtreeHandler::GetNext;
    int Get(unsigned id, BVarBindList& list, int& index, int count) override;
    int GetNext(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;
    IMIBInfo* GetIMibInfo() override;
    BString ToString() override;
    virtual int Get(unsigned id, BVarBind& binding) = 0;
    virtual int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) = 0;
    virtual int NextInstance(unsigned id, BVarBind& binding) = 0;
    virtual void Initialize();
    virtual void Cleanup();
    virtual SRqHndlrMapEntry* GetRqHndlrMap() const;
    virtual const SConstraintMapEntry* GetConstraintMap() const;

    const SRqHndlrMapEntry* FindRqHndlrEntry(unsigned column) const;
    const SRqHndlrMapEntry* FindRqHndlrEntry(const char* name) const;
    const SRqHndlrMapEntry* GetFirstRqHndlrEntry() const;
    const SRqHndlrMapEntry* NextRqHndlrEntry(unsigned column) const;
    const SRqHndlrMapEntry* NextRqHndlrEntry(const char* name) const;
    static const SConstraintMapEntry* GetTCConstraintMap() { return s_tcConstraints; }
    const SConstraintMapEntry* FindTCConstraintMapEntry(const char* name) const;
    void SetExtrenalTCConstraints(const SConstraintMapEntry* conventions);
    void ResolveConstraints();
    bool IsInitialized() const;

    // Get and Set of one map entry; `instance` is null for scalars.
    int Get(const SRqHndlrMapEntry* entry, unsigned id, BObjectSyntax& value,
            const BObjectIdentifier* instance);
    int Set(const SRqHndlrMapEntry* entry, unsigned id, ESnmpSetOpCode op, void** slot,
            const BObjectSyntax& value, const BObjectIdentifier* instance);

protected:
    BMibImpl(const BString& name, const BObjectIdentifier& oid, EImplKind kind,
             unsigned rangePosition = 0, unsigned rangeUpperBound = 0);

private:
    friend struct SLayoutCheck;
    friend class BMibImplGroup;
    unsigned char m_initialized;
    const SConstraintMapEntry* m_externalConventions;
    BMibInfo m_info;
};

class VKMIBH_API BMibImplGroup {
public:
    BMibImplGroup() = default;
    explicit BMibImplGroup(const BString& name) : m_name(name) {}
    BMibImplGroup(const BMibImplGroup&) = delete;
    BMibImplGroup& operator=(const BMibImplGroup&) = delete;
    virtual ~BMibImplGroup();
    virtual int Init();
    virtual void Cleanup();
    virtual int GetNumImpls() = 0;
    virtual BMibImpl* GetImplAt(int index) = 0;
    virtual const SConstraintMapEntry* GetTCConstraintMap() const;
    virtual void InitDefVals();
    const BString& Name() const { return m_name; }

private:
    BString m_name;
};

// One scalar, registered at its own OID; the first map entry describes it.
class VKMIBH_API BMibScalarImpl : public BMibImpl {
public:
    BMibScalarImpl(const BString& name, const BObjectIdentifier& oid);
    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;
};

// Scalars registered together at their parent's OID, one map entry each.
class VKMIBH_API BMibScalarGroupImpl : public BMibImpl {
public:
    BMibScalarGroupImpl(const BString& name, const BObjectIdentifier& oid);
    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;
};

// A conceptual table, registered at its entry OID.
class VKMIBH_API BMibTableImpl : public BMibImpl {
public:
    BMibTableImpl(const BString& name, const BObjectIdentifier& oid);
    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;
    virtual int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                          BObjectIdentifier& nextIndex) = 0;

protected:
    BMibTableImpl(const BString& name, const BObjectIdentifier& oid, EImplKind kind);
};

// One conceptual row with a fixed index, registered over a range of columns.
class VKMIBH_API BMibRowImpl : public BMibImpl {
public:
    // Serves prefix.low.suffix to prefix.high.suffix.
    BMibRowImpl(const BString& name, const BObjectIdentifier& prefix, unsigned low, unsigned high,
                const BObjectIdentifier& suffix);
    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;

protected:
    BObjectIdentifier m_rangePrefix;
    unsigned m_low;
    unsigned m_high;
    BObjectIdentifier m_indexSuffix;

private:
    friend struct SLayoutCheck;
};

} // namespace VLK
