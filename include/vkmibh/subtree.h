// Subtree handlers: what serves a region of the MIB.
#pragma once

#include <vkmibh/timer.h>
#include <vkmibh/values.h>

namespace VLK {

class IMIBInfo;
class BMibSubtreeHandler;

// The phase of a SET.
enum ESnmpSetOpCode { eSetTest = 224, eSetCommit = 163, eSetUndo = 225, eSetCleanup = 226 };

// SNMP error status, RFC 3416 section 3.
enum ESnmpErrorStatus {
    eSnmpNoError = 0,
    eSnmpTooBig = 1,
    eSnmpNoSuchName = 2,
    eSnmpBadValue = 3,
    eSnmpReadOnly = 4,
    eSnmpGenErr = 5,
    eSnmpNoAccess = 6,
    eSnmpWrongType = 7,
    eSnmpWrongLength = 8,
    eSnmpWrongEncoding = 9,
    eSnmpWrongValue = 10,
    eSnmpNoCreation = 11,
    eSnmpInconsistentValue = 12,
    eSnmpResourceUnavailable = 13,
    eSnmpCommitFailed = 14,
    eSnmpUndoFailed = 15,
    eSnmpAuthorizationError = 16,
    eSnmpNotWritable = 17,
    eSnmpInconsistentName = 18
};

// What one binding of a SET keeps from phase to phase. The `void** slots` of
// Set() is the address of the first slot's scratch pointer; the slots of a run
// of bindings stand side by side.
struct SSetSlot {
    void* scratch;
    int position;
    unsigned char tested;
    unsigned char committed;
    BMibSubtreeHandler* owner;
};

// Kinds of the implementation classes; 1 to 20 mark a BMibImpl.
enum EImplKind {
    eImplPlainHandler = 0,
    eImplBase = 1,
    eImplScalar = 2,
    eImplScalarGroup = 3,
    eImplTable = 4,
    eImplTableEx = 5,
    eImplTableEx2 = 6,
    eImplRow = 7,
    eImplLastKind = 20
};

// Serves a region of the MIB: every identifier under the one it is registered
// at. What a BMibTree holds; BMibImpl and its descendants are such handlers, and
// a host may write its own for a whole subtree:
//
//   class CClock : public BMibSubtreeHandler {
//       int Get(unsigned id, BVarBindList& list, int& index, int count) override;
//       int GetNext(unsigned id, BVarBind& binding) override;
//       int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
//               int& index, int count) override;
//   };
//   handler.RegisterSubtreeHandler(&clock);
//
// Ownership: the host's; it is unregistered before it is destroyed.
// Threads:   several requests may be inside one handler at the same time, none
//            while registrations change. State kept across calls is guarded by
//            the handler itself; Mutex() is there for that.
// Errors:    SNMP error status (RFC 3416 section 3), 0 = done. What works on a
//            list moves `index` to the binding that failed.
// Contract:  field order is ABI. A range position p (counted from 1, 0 = none)
//            and an upper bound hang the handler at every value of arc p of its
//            identifier, from that arc's own value to the bound.
class VKMIBH_API BMibSubtreeHandler : public ITimeSubscriber {
public:
    BMibSubtreeHandler(const BString& name, const BObjectIdentifier& oid,
                       unsigned rangePosition = 0, unsigned rangeUpperBound = 0);
    BMibSubtreeHandler(const BMibSubtreeHandler&) = delete;
    BMibSubtreeHandler& operator=(const BMibSubtreeHandler&) = delete;

    // Does nothing.
    static void null() {}

    const BString& Name() const { return m_name; }
    const BObjectIdentifier& Oid() const { return m_oid; }
    unsigned RangePosition() const { return m_rangePosition; }
    unsigned RangeUpperBound() const { return m_rangeUpperBound; }
    // An EImplKind.
    unsigned ImplKind() const { return m_implKind; }
    TMutex& Mutex() const { return m_mutex; }

    // Virtual operations, in slot order.
    ~BMibSubtreeHandler() override;
    // The timer's callback for a handler that subscribed; runs under the timer's lock.
    void OnTimeout(BTimeInterval& interval) override;
    // Fills `count` values from `index` on.
    virtual int Get(unsigned transactionId, BVarBindList& list, int& index, int count) = 0;
    // Not called by BMibHandler; eSnmpGenErr here.
    virtual int GetNext(unsigned transactionId, BVarBindList& list, int& index, int count);
    // Replaces the binding with the next instance of the region and its value. Status 2, or the
    // value noSuchObject or noSuchInstance, says that the region holds nothing further.
    virtual int GetNext(unsigned transactionId, BVarBind& binding) = 0;
    // One phase of a SET for `count` bindings from `index` on; `slots` are those of the bindings.
    virtual int Set(unsigned transactionId, const BVarBindList& list, ESnmpSetOpCode op,
                    void** slots, int& index, int count) = 0;
    // Whether the handler also serves an identifier that lies at another node, so that it can
    // join a run of bindings.
    virtual bool HandlesInstance(const BObjectIdentifier& oid);
    virtual IMIBInfo* GetIMibInfo();
    virtual BString ToString();

protected:
    void SetImplKind(unsigned kind) { m_implKind = kind; }

private:
    friend struct SLayoutCheck;
    BString m_name;
    BObjectIdentifier m_oid;
    unsigned m_rangePosition;
    unsigned m_rangeUpperBound;
    unsigned m_implKind;
    mutable TMutex m_mutex;
};

} // namespace VLK
