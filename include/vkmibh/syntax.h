// Tagged SNMP value.
#pragma once

#include <vkmibh/counter64.h>
#include <vkmibh/objectid.h>
#include <vkmibh/octets.h>

namespace VLK {

// ASN.1 tags of SNMPv2-SMI (RFC 2578 section 7, RFC 3416 section 3). The type is
// fixed so that a tag that is none of them can be handed in as well.
enum EAsnSyntax : int {
    eAsnInteger = 2,
    eAsnOctetString = 4,
    eAsnNull = 5,
    eAsnObjectId = 6,
    eAsnIpAddress = 64,
    eAsnCounter32 = 65,
    eAsnGauge32 = 66,
    eAsnTimeTicks = 67,
    eAsnOpaque = 68,
    eAsnCounter64 = 70
};

// Exceptions of RFC 3416 section 3, held in the tag of a value.
enum ESnmpException : int { eNoSuchObject = 128, eNoSuchInstance = 129, eEndOfMibView = 130 };

// The value of one variable: a tag and what belongs to it.
//
//   BObjectSyntax value;                 // NULL
//   value.SetTimeTicks(4711);            // hundredths of a second
//   value.SetOctets(BString("eth0"));
//   value.ValToStr();                    // "eth0"
//   value.SetV2Exception(eNoSuchInstance);
//
// Ownership: owns its bytes or arcs, copies deeply, moves without copying. The
//            references of Octets and ObjectId live until the next change; they
//            may be given to a setter of the same value.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    none are reported. A copy without memory reads as empty, a text
//            form without memory is empty.
// Contract:  the tag byte and the value area are ABI, encoders read them. The
//            area is INTEGER, Counter32, Gauge32, TimeTicks: one word; OCTET
//            STRING, Opaque: the fields of BOctetString; OBJECT IDENTIFIER:
//            those of BObjectIdentifier; IpAddress: four bytes; Counter64: an
//            SCTR64; else nothing. Words not used are 0, and a capacity may be
//            0 beside an array. An object of all zero bytes (tag 0) is
//            valid for every call and prints as nothing.
class VKMIBH_API BObjectSyntax {
public:
    explicit BObjectSyntax(EAsnSyntax syntax = eAsnNull);
    BObjectSyntax(const BObjectSyntax& other);
    BObjectSyntax(BObjectSyntax&& other) noexcept;
    ~BObjectSyntax();
    BObjectSyntax& operator=(const BObjectSyntax& other);
    BObjectSyntax& operator=(BObjectSyntax&& other) noexcept;
    void Assign(const BObjectSyntax& other);
    // Releases and zeroes the value; the tag stays.
    void FreeResources();

    void SetInt(int value);
    void SetCounter(unsigned value);
    void SetGauge(unsigned value);
    // Hundredths of a second.
    void SetTimeTicks(unsigned value);
    void SetCtr64(const SCTR64& value);
    void SetCtr64(const BCounter64& value) { SetCtr64(value.Value()); }
    void SetNull();
    void SetV2Exception(ESnmpException exception);
    void SetOctets(const BOctetString& value);
    void SetOctets(const BString& value);
    // Tag 4: BITS are sent as an OCTET STRING.
    void SetBits(const BOctetString& value);
    void SetOpaque(const BOctetString& value);
    void SetObjectId(const BObjectIdentifier& value);
    void SetIpAddress(const BIpAddress& value);

    // For people: bytes that are no text are printed in hexadecimal, arcs as
    // signed numbers.
    BString ValToStr() const;
    // An EAsnSyntax or ESnmpException value.
    unsigned char Syntax() const { return m_syntax; }
    bool IsException() const { return (m_syntax & 0x80) != 0; }
    // Each of these answers for its own tags and is 0 or empty for all others.
    int Int() const;
    unsigned Unsigned() const;
    SCTR64 Ctr64() const;
    BIpAddress IpAddress() const;
    const BOctetString& Octets() const;
    const BObjectIdentifier& ObjectId() const;

private:
    friend struct SLayoutCheck;
    union UValue {
        UValue() noexcept {}
        ~UValue() {}
        int integer;
        unsigned number;
        unsigned char address[4];
        SCTR64 counter;
        BOctetString octets;
        BObjectIdentifier objectId;
    };

    VKMIBH_LOCAL void Take(BObjectSyntax& other) noexcept;
    VKMIBH_LOCAL void Reset(unsigned char syntax);
    VKMIBH_LOCAL void CopyOctets(const unsigned char* bytes, unsigned length);
    VKMIBH_LOCAL void CopyObjectId(const BObjectIdentifier& value);

    unsigned char m_syntax;
    UValue m_value;
};

} // namespace VLK
