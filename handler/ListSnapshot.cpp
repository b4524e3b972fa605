#include "handler/ListSnapshot.h"

#include "values/WholeCopy.h"

#include <cstring>
#include <new>
#include <utility>

namespace VLK {

// The inline words are room, written before they are read.
// cppcheck-suppress uninitMemberVar
ListSnapshot::ListSnapshot(const BVarBindList& list)
    : m_valid(true), m_packed(true), m_count(list.Count()), m_words(m_inline)
{
    uint64_t words = 0;
    for (unsigned i = 0; i < m_count && m_packed; ++i) {
        const BVarBind& binding = list[static_cast<int>(i)];
        m_packed = binding.Value().Syntax() == eAsnNull;
        words += 1 + uint64_t(binding.Name().Length());
    }
    if (!m_packed || words > ~0u) {
        m_packed = false;
        m_valid = CopyWhole(m_full, list);
        return;
    }
    Pack(list, static_cast<unsigned>(words));
}

ListSnapshot::~ListSnapshot()
{
    if (m_words != m_inline)
        delete[] m_words;
}

void ListSnapshot::Pack(const BVarBindList& list, unsigned words)
{
    if (words > kInlineArcs) {
        m_words = new (std::nothrow) unsigned[words];
        if (!m_words) {
            m_valid = false;
            return;
        }
    }
    unsigned* out = m_words;
    for (unsigned i = 0; i < m_count; ++i) {
        const BObjectIdentifier& name = list[static_cast<int>(i)].Name();
        *out++ = name.Length();
        if (name.Length())
            std::memcpy(out, name.Arcs(), name.Length() * sizeof(unsigned));
        out += name.Length();
    }
}

void ListSnapshot::Restore(BVarBindList& list)
{
    if (!m_packed) {
        list = std::move(m_full);
        return;
    }
    while (list.Count() > m_count && list.Remove(static_cast<int>(list.Count()) - 1)) {
    }
    while (list.Count() < m_count && list.Append(BVarBind())) {
    }
    const unsigned* in = m_words;
    // Shorter when there was no memory to lengthen it again.
    for (unsigned i = 0; i < list.Count(); ++i) {
        BVarBind& binding = list[static_cast<int>(i)];
        const unsigned length = *in++;
        binding.Name().Set(length, in);
        binding.Value().SetNull();
        in += length;
    }
}

} // namespace VLK
