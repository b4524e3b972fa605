// SETs of view families against an agent that is killed at any moment.
#pragma once

#include "Ber.h"
#include "RunningAgent.h"
#include "UdpClient.h"

#include <algorithm>
#include <deque>
#include <map>
#include <random>

// Every SET numbers itself: it writes its number into the mask of one row, and
// changes up to three others. So what a restarted agent shows there tells which SET
// was the last it kept, and every other row has to be as that SET left it.
class ViewKills {
public:
    explicit ViewKills(unsigned seed) : m_random(seed) {}

    void Run(int kills)
    {
        for (int kill = 0; kill < kills && !testing::Test::HasFailure(); ++kill) {
            SCOPED_TRACE("kill " + std::to_string(kill));
            KillWhileItStarts();
            LiveAndDie();
        }
        for (int signalNumber : {SIGKILL, SIGTERM, SIGTERM}) {
            RunningServer agent(m_line);
            ASSERT_TRUE(agent.IsReady()) << agent.Earlier() << agent.FirstLine();
            ExpectWhole(UdpClient(agent.Port()));
            agent.Kill(signalNumber);
        }
    }

    int Acknowledged() const { return m_acknowledged; }
    // SETs on their way of which nothing was kept, and rows that had to be gone.
    int CutOff() const { return m_cutOff; }
    int Forgotten() const { return m_forgotten; }

private:
    enum EStorage { eVolatile = 2, eNonVolatile = 3 };
    enum EStatus { eActive = 1, eNotInService, eCreateAndGo = 4, eCreateAndWait, eDestroy };
    struct SRow {
        ber::Bytes mask;
        int type = 1;
        int storage = eNonVolatile;
        int status = eActive;
    };
    using CRows = std::map<unsigned, SRow>; // by the last arc of the subtree

    static constexpr unsigned kNumbered = 0; // in the configuration
    static constexpr unsigned kOthers = 7;   // from 1 on
    static constexpr int kPatience = 30000;

    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_random() % bound); }

    static ber::Oid Name(unsigned column, unsigned family)
    {
        return {1, 3, 6, 1, 6, 3, 16, 1, 5, 2, 1, column, 1, 'k', 3, 1, 3, family};
    }
    static ber::Bytes Number(unsigned column, unsigned family, int value)
    {
        return ber::Binding(Name(column, family), ber::Integer(value));
    }
    static ber::Bytes Mask(unsigned family, const ber::Bytes& mask)
    {
        return ber::Binding(Name(3, family), ber::Tlv(4, mask));
    }

    // Makes, destroys, or changes and suspends or resumes a row.
    void Change(CRows& rows, unsigned family, std::vector<ber::Bytes>& bindings)
    {
        const bool isThere = rows.count(family) > 0;
        if (isThere && Below(3) == 0) {
            bindings.push_back(Number(6, family, eDestroy));
            rows.erase(family);
            return;
        }
        SRow& row = rows[family];
        row.mask = rows[kNumbered].mask;
        row.type = 1 + static_cast<int>(Below(2));
        if (isThere) {
            row.status = row.status == eActive ? eNotInService : eActive;
            bindings.push_back(Number(6, family, row.status));
        } else {
            row.storage = Below(3) ? eNonVolatile : eVolatile;
            row.status = Below(4) ? eActive : eNotInService;
            bindings.push_back(Number(5, family, row.storage));
            bindings.push_back(
                Number(6, family, row.status == eActive ? eCreateAndGo : eCreateAndWait));
        }
        bindings.push_back(Mask(family, row.mask));
        bindings.push_back(Number(4, family, row.type));
    }

    // The next SET; its bindings stand in any order.
    ber::Bytes MakeSet(CRows& rows)
    {
        rows[kNumbered].mask = ber::Reader(ber::Integer(++m_number)).Element();
        std::vector<ber::Bytes> bindings{Mask(kNumbered, rows[kNumbered].mask)};
        const unsigned first = Below(kOthers);
        for (unsigned i = 0, count = 1 + Below(3); i < count; ++i)
            Change(rows, 1 + (first + i) % kOthers, bindings);
        std::shuffle(bindings.begin(), bindings.end(), m_random);
        ber::Bytes all;
        for (const ber::Bytes& binding : bindings)
            all += binding;
        return ber::Message(1, "boss", 0xa3, m_number, 0, 0, all);
    }

    void KillWhileItStarts()
    {
        if (Below(3) > 0)
            return;
        Process agent(m_line);
        usleep(Below(20000));
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
    }

    // Some SETs are acknowledged, others are on their way when it dies.
    void LiveAndDie()
    {
        RunningServer agent(m_line);
        ASSERT_TRUE(agent.IsReady()) << agent.Earlier() << agent.FirstLine();
        const UdpClient client(agent.Port());
        ExpectWhole(client);
        const size_t window = 1 + Below(4);
        for (unsigned wanted = Below(12); wanted > 0; --wanted) {
            Fill(client, window);
            ASSERT_TRUE(TakeAnswer(client, kPatience)) << "no answer";
        }
        Fill(client, window);
        usleep(Below(Below(2) ? 500 : 8000));
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
        while (m_states.size() > 1 && TakeAnswer(client, 0)) {
        }
    }

    void Fill(const UdpClient& client, size_t window)
    {
        while (m_states.size() <= window) {
            CRows rows = m_states.back();
            ASSERT_TRUE(client.Send(MakeSet(rows)));
            m_states.push_back(rows);
        }
    }

    // The answer to the oldest SET that is open.
    bool TakeAnswer(const UdpClient& client, int milliseconds)
    {
        const ber::Reply reply = ber::ReadReply(client.Receive(milliseconds));
        if (!reply.ok)
            return false;
        EXPECT_EQ(reply.requestId, m_number - static_cast<int>(m_states.size()) + 2);
        EXPECT_EQ(reply.status, 0) << "at " << reply.index;
        m_states.pop_front();
        ++m_acknowledged;
        return true;
    }

    // What a restart keeps.
    static CRows Kept(CRows rows)
    {
        for (auto row = rows.begin(); row != rows.end();) {
            const bool isKept =
                row->second.storage == eNonVolatile && row->second.status == eActive;
            row = isKept ? std::next(row) : rows.erase(row);
        }
        return rows;
    }

    static std::string Text(const CRows& rows)
    {
        std::string text;
        for (const auto& [family, row] : rows) {
            text += std::to_string(family) + ":";
            for (unsigned char octet : row.mask)
                text += " " + std::to_string(octet);
            text += ", type " + std::to_string(row.type) + ", storage " +
                    std::to_string(row.storage) + ", status " + std::to_string(row.status) + "\n";
        }
        return text;
    }

    // All rows of the view; one that lacks a column has a 0 there.
    static CRows Read(const UdpClient& client)
    {
        ber::Bytes from;
        std::map<ber::Bytes, std::pair<unsigned, unsigned>> cells;
        for (unsigned column = 3; column <= 6; ++column) {
            ber::Oid view = Name(column, 0);
            view.resize(14);
            from += ber::Binding(view);
            for (unsigned family = 0; family <= kOthers; ++family)
                cells[ber::Name(Name(column, family))] = {column, family};
        }
        EXPECT_TRUE(client.Send(ber::Message(1, "boss", 0xa5, 0, 0, kOthers + 2, from)));
        const ber::Reply reply = ber::ReadReply(client.Receive(kPatience));
        EXPECT_TRUE(reply.ok);
        CRows rows;
        for (size_t i = 0; i < reply.names.size(); ++i) {
            const auto cell = cells.find(reply.names[i]);
            if (cell == cells.end())
                continue;
            const auto [column, family] = cell->second;
            SRow& row = rows.emplace(family, SRow{"", 0, 0, 0}).first->second;
            const int number = ber::Reader(ber::Tlv(2, reply.values[i])).Number();
            if (column == 3)
                row.mask = reply.values[i];
            else
                (column == 4 ? row.type : column == 5 ? row.storage : row.status) = number;
        }
        return rows;
    }

    // The agent must show what the last SET that was acknowledged left, or a later
    // one, and go on from there.
    void ExpectWhole(const UdpClient& client)
    {
        const CRows seen = Read(client);
        const auto numbered = seen.find(kNumbered);
        ASSERT_NE(numbered, seen.end()) << Text(seen);
        const auto state = std::find_if(m_states.begin(), m_states.end(), [&](const CRows& rows) {
            return rows.at(kNumbered).mask == numbered->second.mask;
        });
        ASSERT_NE(state, m_states.end()) << "a SET that was acknowledged is lost:\n"
                                         << Text(seen) << "instead of at least\n"
                                         << Text(m_states.front());
        const CRows kept = Kept(*state);
        EXPECT_EQ(Text(seen), Text(kept));
        m_cutOff += static_cast<int>(m_states.end() - state) - 1;
        m_forgotten += static_cast<int>(state->size() - kept.size());
        m_states = {kept};
    }

    std::mt19937 m_random;
    TempDir m_directory;
    ConfigFile m_file{"agentAddress = \"udp:127.0.0.1:0\"\n"
                      "[[view]]\nname = \"k\"\ninclude = [\"1.3.0\"]\n"
                      "[[community]]\nname = \"boss\"\nread = \"everything\"\n"
                      "write = \"everything\"\n"};
    const Arguments m_line{VKAGENTD, "--store", m_directory.File("store.db"), "--config",
                           m_file.Name()};
    // The rows as they are acknowledged, and after each SET that is open.
    std::deque<CRows> m_states{{{kNumbered, SRow()}}};
    int m_number = 0;
    int m_acknowledged = 0;
    int m_cutOff = 0;
    int m_forgotten = 0;
};
