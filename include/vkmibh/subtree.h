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
// Set() is the address of the first slot's scratch pointer.
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

class VKMIBH_API BMibSubtreeHandler : public ITimeSubscriber {
public:
    BMibSubtreeHandler(const BString& name, const BObjectIdentifier& oid,
                       unsigned rangePosition = 0, unsigned rangeUpperBound = 0);
    BMibSubtreeHandler(const BMibSubtreeHandler&) = delete;
    BMibSubtreeHandler& operator=(const BMibSubtreeHandler&) = delete;

    ~BMibSubtreeHandler() override;
    void OnTimeout(BTimeInterval& interval) override;
    virtual int Get(unsigned transactionId, BVarBindList& list, int& index, int count) = 0;
    virtual int GetNext(unsigned transactionId, BVarBindList& list, int& index, int count);
    virtual int GetNext(unsigned transactionId, BVarBind& binding) = 0;
    virtual int Set(unsigned transactionId, const BVarBindList& list, ESnmpSetOpCode op,
                    void** slots, int& index, int count) = 0;
    virtual bool HandlesInstance(const BObjectIdentifier& oid);
    virtual IMIBInfo* GetIMibInfo();
    virtual BString ToString();

    static void null() {}

    const BString& Name() const { return m_name; }
    const BObjectIdentifier& Oid() const { return m_oid; }
    unsigned RangePosition() const { return m_rangePosition; }
    unsigned RangeUpperBound() const { return m_rangeUpperBound; }
    unsigned ImplKind() const { return m_implKind; }
    TMutex& Mutex() const { return m_mutex; }

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
