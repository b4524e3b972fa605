// Two walks over one fixture: GET and GETNEXT of a module must tell the same
// story as a sorted list of what it serves.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>
#include <vkmibh/subtree.h>

namespace VLK {

struct SServed {
    const char* name;
    int tag;
    const char* value; // as ValToStr() gives it
};

inline std::string TextOf(const BObjectIdentifier& oid) { return oid.ToString().c_str(); }

inline BObjectIdentifier OidOf(const char* dotted) { return BObjectIdentifier(BString(dotted)); }

class TwoWalks {
public:
    TwoWalks(BMibSubtreeHandler& handler, const char* root, std::vector<SServed> served)
        : m_handler(handler), m_root(OidOf(root)), m_served(std::move(served))
    {
        for (const SServed& item : m_served)
            m_names.push_back(OidOf(item.name));
    }

    void Run()
    {
        ASSERT_TRUE(std::is_sorted(m_names.begin(), m_names.end())) << "the fixture's order";
        Gets();
        Walk();
        for (const BObjectIdentifier& name : Questions())
            AskNext(name);
    }

private:
    static constexpr unsigned kId = 77;

    void ExpectServed(size_t i, const BObjectSyntax& value, const std::string& asked)
    {
        EXPECT_EQ(m_served[i].tag, int(value.Syntax())) << asked;
        EXPECT_STREQ(m_served[i].value, value.ValToStr().c_str()) << asked;
    }

    void Gets()
    {
        for (size_t i = 0; i < m_names.size(); ++i) {
            BVarBindList list;
            list.Append(m_names[i]);
            int index = 0;
            EXPECT_EQ(0, m_handler.Get(kId, list, index, 1)) << m_served[i].name;
            EXPECT_EQ(m_served[i].name, TextOf(list[0].Name()));
            ExpectServed(i, list[0].Value(), std::string("get ") + m_served[i].name);
        }
    }

    // From the root to the end, each answer being the next question.
    void Walk()
    {
        BVarBind binding(m_root);
        for (size_t i = 0; i < m_names.size(); ++i) {
            ASSERT_EQ(0, m_handler.GetNext(kId, binding)) << "step " << i;
            ASSERT_EQ(m_served[i].name, TextOf(binding.Name())) << "step " << i;
            ExpectServed(i, binding.Value(), std::string("walk ") + m_served[i].name);
            binding.Value().SetNull();
        }
        ASSERT_EQ(0, m_handler.GetNext(kId, binding));
        EXPECT_EQ(int(eEndOfMibView), int(binding.Value().Syntax())) << "after the last";
    }

    // Every name, what lies just before and just after it, and all above it.
    std::vector<BObjectIdentifier> Questions() const
    {
        std::vector<BObjectIdentifier> questions{BObjectIdentifier(), m_root};
        for (const BObjectIdentifier& name : m_names) {
            questions.push_back(name);
            for (unsigned length = m_root.Length(); length < name.Length(); ++length) {
                BObjectIdentifier above(name);
                above.Truncate(length);
                questions.push_back(above);
            }
            BObjectIdentifier near(name);
            unsigned& last = near[near.Length() - 1];
            if (last > 0) {
                --last;
                questions.push_back(near);
                near.Append(~0u);
                questions.push_back(near);
            }
            near = name;
            near.Append(0u);
            questions.push_back(near);
            near = name;
            if (near[near.Length() - 1] != ~0u) {
                ++near[near.Length() - 1];
                questions.push_back(near);
            }
        }
        BObjectIdentifier after(m_root);
        ++after[after.Length() - 1];
        questions.push_back(after);
        return questions;
    }

    void AskNext(const BObjectIdentifier& name)
    {
        const std::string asked = "next of " + TextOf(name);
        const auto next = std::upper_bound(m_names.begin(), m_names.end(), name);
        BVarBind binding(name);
        ASSERT_EQ(0, m_handler.GetNext(kId, binding)) << asked;
        if (next == m_names.end()) {
            EXPECT_EQ(int(eEndOfMibView), int(binding.Value().Syntax())) << asked;
            return;
        }
        EXPECT_EQ(TextOf(*next), TextOf(binding.Name())) << asked;
        ExpectServed(static_cast<size_t>(next - m_names.begin()), binding.Value(), asked);
    }

    BMibSubtreeHandler& m_handler;
    BObjectIdentifier m_root;
    std::vector<SServed> m_served;
    std::vector<BObjectIdentifier> m_names;
};

} // namespace VLK
