// The trailing arcs of an OID, seen as an OID of their own without a copy.
#pragma once

#include <vkmibh/values.h>

namespace VLK {

// Lives no longer than the arcs it shows. The OID is only given out as const: it
// can be read and copied (a copy owns its arcs), but not grown or written.
class VKMIBH_LOCAL InstanceView {
public:
    InstanceView(const BObjectIdentifier& name, unsigned from)
    {
        if (from < name.Length()) {
            const unsigned length = name.Length() - from;
            m_oid.Attach(length, const_cast<unsigned*>(name.Arcs()) + from, length);
        }
    }
    ~InstanceView()
    {
        unsigned length;
        m_oid.Detach(length);
    }
    InstanceView(const InstanceView&) = delete;
    InstanceView& operator=(const InstanceView&) = delete;

    const BObjectIdentifier& Oid() const { return m_oid; }

private:
    BObjectIdentifier m_oid;
};

} // namespace VLK
