// The sorted maps against std::map.
#include "fuzz/Fuzz.h"
#include "tests/support/Oids.h"

#include <iterator>
#include <map>
#include <vkmibh/containers.h>

namespace VLK::Fuzz {
namespace {

struct SInts {
    using Map = BMapInt2Ptr;
    using Plain = int;
    static Plain Take(CBytes& bytes)
    {
        return bytes.ConsumeBool() ? bytes.ConsumeIntegralInRange<int>(-8, 8)
                                   : bytes.ConsumeIntegral<int>();
    }
    static int Key(int plain) { return plain; }
    static Plain Of(int key) { return key; }
};

struct STexts {
    using Map = BMapStr2Ptr;
    using Plain = std::string; // in the order of unsigned bytes
    static Plain Take(CBytes& bytes)
    {
        return bytes.ConsumeBytesAsString(bytes.ConsumeIntegralInRange<size_t>(0, 3));
    }
    static BString Key(const Plain& plain) { return TextOf(plain); }
    static Plain Of(const BString& key) { return PlainOf(key); }
};

struct SOids {
    using Map = BMapOid2Ptr;
    using Plain = std::vector<unsigned>;
    static Plain Take(CBytes& bytes) { return TakeArcs(bytes, 4); }
    static BObjectIdentifier Key(const Plain& plain) { return Test::MakeOid(plain); }
    static Plain Of(const BObjectIdentifier& key) { return Test::ArcsOf(key); }
};

template <class Kind>
class Pair {
public:
    void Step(CBytes& bytes)
    {
        const typename Kind::Plain plain = Kind::Take(bytes);
        void* data = &m_places[bytes.ConsumeIntegralInRange<size_t>(0, 7)];
        switch (bytes.ConsumeIntegralInRange<int>(0, 4)) {
        case 0: {
            const auto found = m_model.find(plain);
            void* expected = found == m_model.end() ? nullptr : found->second;
            Require(m_map.Remove(Kind::Key(plain)) == expected, "what is removed");
            m_model.erase(plain);
            break;
        }
        case 1:
            Ask(plain);
            break;
        default:
            Require(m_map.Insert(Kind::Key(plain), data) == m_model.emplace(plain, data).second,
                    "whether there is one already");
        }
        Require(m_map.Count() == m_model.size(), "the count");
    }

    void Compare() const
    {
        int index = 0;
        for (const auto& [plain, data] : m_model) {
            Require(Kind::Of(m_map.KeyAt(index)) == plain, "a key at its place");
            Require(m_map.DataAt(index) == data, "what it points to");
            ++index;
        }
    }

private:
    int IndexOf(typename std::map<typename Kind::Plain, void*>::const_iterator at) const
    {
        return at == m_model.end() ? -1 : static_cast<int>(std::distance(m_model.begin(), at));
    }
    void Ask(const typename Kind::Plain& plain) const
    {
        Require(m_map.Find(Kind::Key(plain)) == IndexOf(m_model.find(plain)), "where a key is");
        Require(m_map.Next(Kind::Key(plain)) == IndexOf(m_model.upper_bound(plain)),
                "where the next one is");
    }

    typename Kind::Map m_map;
    std::map<typename Kind::Plain, void*> m_model;
    char m_places[8] = {};
};

template <class Kind>
void Run(CBytes& bytes)
{
    Pair<Kind> pair;
    while (bytes.remaining_bytes() > 0)
        pair.Step(bytes);
    pair.Compare();
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    using namespace VLK::Fuzz;
    CBytes bytes(data, size);
    switch (bytes.ConsumeIntegralInRange<int>(0, 2)) {
    case 0:
        Run<SInts>(bytes);
        break;
    case 1:
        Run<STexts>(bytes);
        break;
    default:
        Run<SOids>(bytes);
    }
    return 0;
}
