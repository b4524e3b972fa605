// The fields of stored rows, each under the number of its column.
#pragma once

#include <new>
#include <string>
#include <vkmibh/nonvolatile.h>
#include <vkmibh/values.h>

namespace VLK::modules {

// Good as long as every field was there, and of its kind and range.
class CEntryReader {
public:
    CEntryReader(INonVolatile& store, const char* section, int position)
        : m_store(store), m_section(section), m_position(position)
    {
    }
    bool IsGood() const { return m_isGood; }
    template <class V>
    void Number(int field, V& value, int low, int high)
    {
        int number = 0;
        Note(m_store.GetIntAt(m_section, m_position, number, field) == 0 && number >= low &&
             number <= high);
        value = static_cast<V>(number);
    }
    void Text(int field, BString& value, unsigned most)
    {
        BOctetString octets;
        Octets(field, octets, most);
        if (octets.Length() != 0)
            value = BString(reinterpret_cast<const char*>(octets.Data()), octets.Length());
        Note(value.length() == octets.Length());
    }
    void Octets(int field, BOctetString& value, unsigned most)
    {
        Note(m_store.GetOctetsAt(m_section, m_position, value, field) == 0 &&
             value.Length() <= most);
    }
    void Octets(int field, std::string& value, unsigned most)
    {
        BOctetString octets;
        Octets(field, octets, most);
        value.assign(octets.Data(), octets.Data() + octets.Length());
    }
    void Oid(int field, BObjectIdentifier& value)
    {
        Note(m_store.GetOidAt(m_section, m_position, value, field) == 0 && value.Length() != 0);
    }

private:
    void Note(bool isGood) { m_isGood = m_isGood && isGood; }

    INonVolatile& m_store;
    const char* const m_section;
    const int m_position;
    bool m_isGood = true;
};

class CEntryWriter {
public:
    CEntryWriter(INonVolatile& store, const char* section, const char* key)
        : m_store(store), m_section(section), m_key(key)
    {
    }
    int Status() const { return m_status; }
    void Number(int field, int value)
    {
        m_status |= m_store.SetInt(m_section, m_key, value, nullptr, field, 0);
    }
    void Text(int field, const BString& value) { Octets(field, value.c_str(), value.length()); }
    void Octets(int field, const std::string& value) { Octets(field, value.data(), value.size()); }
    void Octets(int field, const BOctetString& value)
    {
        m_status |= m_store.SetOctets(m_section, m_key, value, field, 0);
    }
    void Oid(int field, const BObjectIdentifier& value)
    {
        m_status |= m_store.SetOid(m_section, m_key, value, field, 0);
    }

private:
    void Octets(int field, const char* text, size_t length)
    {
        const auto* const first = reinterpret_cast<const unsigned char*>(text);
        const BOctetString octets(first, first + length);
        if (octets.Length() != length)
            throw std::bad_alloc();
        Octets(field, octets);
    }

    INonVolatile& m_store;
    const char* const m_section;
    const char* const m_key;
    int m_status = 0;
};

} // namespace VLK::modules
