// SETs of view families, alarms' events and sysContact against an agent that is killed at
// any moment, and speaks SNMPv3.
#pragma once

#include "Ber.h"
#include "RunningAgent.h"
#include "UdpClient.h"
#include "V3Message.h"

#include <algorithm>
#include <deque>
#include <map>
#include <random>

// Some managers change rows of their own, each with one SET on its way at a time. Every
// SET numbers itself: it writes its number into the mask of one of its manager's rows,
// and into the owner of its event; it changes up to three other rows, and sysContact if it
// is the first manager's. So what a restarted agent shows there tells which SET
// was the last it kept, and every other row has to be as that SET left it.
class ViewKills {
public:
    explicit ViewKills(unsigned seed) : m_random(seed)
    {
        for (unsigned i = 0; i < kManagers; ++i) {
            m_managers[i].numbered = i * kRows;
            m_managers[i].states = {{{i * kRows, SRow()}}};
        }
    }

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
            const UdpClient client(agent.Port());
            ExpectMoreBoots(client);
            ExpectWhole(client);
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
    struct SManager {
        unsigned numbered = 0;    // the row that the configuration has; the others follow
        std::deque<CRows> states; // acknowledged, and after the SET that is on its way
        int number = 0;           // of the last SET

        bool Waits() const { return states.size() > 1; }
    };

    static constexpr unsigned kManagers = 3;
    static constexpr unsigned kRows = 8; // of each
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
    void Change(CRows& rows, unsigned family, const ber::Bytes& mask,
                std::vector<ber::Bytes>& bindings)
    {
        const bool isThere = rows.count(family) > 0;
        if (isThere && Below(3) == 0) {
            bindings.push_back(Number(6, family, eDestroy));
            rows.erase(family);
            return;
        }
        SRow& row = rows[family];
        row.mask = mask;
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

    // A manager's next SET; its bindings stand in any order.
    void Send(const UdpClient& client, SManager& manager)
    {
        manager.number = ++m_number;
        CRows rows = manager.states.back();
        const ber::Bytes mask = ber::Reader(ber::Integer(m_number)).Element();
        rows[manager.numbered].mask = mask;
        std::vector<ber::Bytes> bindings{Mask(manager.numbered, mask)};
        const unsigned first = Below(kRows - 1);
        for (unsigned i = 0, count = 1 + Below(3); i < count; ++i)
            Change(rows, manager.numbered + 1 + (first + i) % (kRows - 1), mask, bindings);
        std::shuffle(bindings.begin(), bindings.end(), m_random);
        ber::Bytes all;
        for (const ber::Bytes& binding : bindings)
            all += binding;
        // Behind the others, so that the rows of two tables and a scalar are one SET.
        const ber::Bytes number = ber::Tlv(4, std::to_string(m_number));
        all += ber::Binding(Owner(manager), number);
        if (&manager == m_managers)
            all += ber::Binding(kContact, number);
        ASSERT_TRUE(client.Send(ber::Message(1, "boss", 0xa3, m_number, 0, 0, all)));
        manager.states.push_back(rows);
    }

    static inline const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};

    // eventOwner and eventStatus of the manager's event.
    unsigned EventOf(const SManager& manager) const
    {
        return 1 + static_cast<unsigned>(&manager - m_managers);
    }
    ber::Oid Owner(const SManager& manager) const
    {
        return {1, 3, 6, 1, 2, 1, 16, 9, 1, 1, 6, EventOf(manager)};
    }
    void MakeEvents(const UdpClient& client)
    {
        for (const SManager& manager : m_managers) {
            for (int status : {2, 1}) {
                const ber::Bytes event = ber::Binding(
                    {1, 3, 6, 1, 2, 1, 16, 9, 1, 1, 7, EventOf(manager)}, ber::Integer(status));
                ASSERT_TRUE(client.Send(ber::Message(1, "boss", 0xa3, 0, 0, 0, event)));
                ASSERT_EQ(ber::ReadReply(client.Receive(kPatience)).status, 0);
            }
        }
        m_hasEvents = true;
    }

    ber::Bytes Value(const UdpClient& client, const ber::Oid& name)
    {
        EXPECT_TRUE(client.Send(ber::Message(1, "boss", 0xa0, 0, 0, 0, ber::Binding(name))));
        const ber::Reply reply = ber::ReadReply(client.Receive(kPatience));
        EXPECT_EQ(reply.values.size(), 1u);
        return reply.values.empty() ? "" : reply.values[0];
    }

    // The report to a stranger tells the engine's ID and boots.
    void ExpectMoreBoots(const UdpClient& client)
    {
        ASSERT_TRUE(client.Send(v3::Request().Encode()));
        const v3::Reply report = v3::ReadReply(client.Receive(kPatience));
        ASSERT_TRUE(report.Reports(v3::kUnknownEngineIds));
        if (!m_engineId.empty()) {
            EXPECT_EQ(report.engineId, m_engineId);
        }
        EXPECT_GT(report.boots, m_boots);
        m_engineId = report.engineId;
        m_boots = report.boots;
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
        ExpectMoreBoots(client);
        ExpectWhole(client);
        if (!m_hasEvents)
            MakeEvents(client);
        const unsigned managers = 1 + Below(kManagers);
        auto sendAll = [&] {
            for (unsigned i = 0; i < managers; ++i) {
                if (!m_managers[i].Waits())
                    Send(client, m_managers[i]);
            }
        };
        for (unsigned wanted = Below(12); wanted > 0; --wanted) {
            sendAll();
            ASSERT_TRUE(TakeAnswer(client, kPatience)) << "no answer";
        }
        sendAll();
        usleep(Below(Below(2) ? 500 : 8000));
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
        while (TakeAnswer(client, 0)) {
        }
    }

    bool TakeAnswer(const UdpClient& client, int milliseconds)
    {
        const ber::Reply reply = ber::ReadReply(client.Receive(milliseconds));
        if (!reply.ok)
            return false;
        EXPECT_EQ(reply.status, 0) << "at " << reply.index;
        for (SManager& manager : m_managers) {
            if (manager.Waits() && manager.number == reply.requestId) {
                manager.states.pop_front();
                ++m_acknowledged;
                return true;
            }
        }
        ADD_FAILURE() << "nobody asked " << reply.requestId;
        return false;
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
        constexpr unsigned kAll = kManagers * kRows;
        ber::Bytes from;
        std::map<ber::Bytes, std::pair<unsigned, unsigned>> cells;
        for (unsigned column = 3; column <= 6; ++column) {
            ber::Oid view = Name(column, 0);
            view.resize(14);
            from += ber::Binding(view);
            for (unsigned family = 0; family < kAll; ++family)
                cells[ber::Name(Name(column, family))] = {column, family};
        }
        EXPECT_TRUE(client.Send(ber::Message(1, "boss", 0xa5, 0, 0, kAll + 1, from)));
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

    // The agent must show what each manager's last SET that was acknowledged left, or
    // the one after it.
    void ExpectWhole(const UdpClient& client)
    {
        const CRows all = Read(client);
        for (SManager& manager : m_managers) {
            ExpectWhole(manager, CRows(all.lower_bound(manager.numbered),
                                       all.lower_bound(manager.numbered + kRows)));
            const ber::Bytes mask =
                all.count(manager.numbered) ? all.at(manager.numbered).mask : ber::Bytes();
            if (!m_hasEvents || mask.empty())
                continue;
            const ber::Bytes number = std::to_string(ber::Reader(ber::Tlv(2, mask)).Number());
            EXPECT_EQ(Value(client, Owner(manager)), number) << "half of a SET";
            if (&manager == m_managers) {
                EXPECT_EQ(Value(client, kContact), number) << "half of a SET";
            }
        }
    }
    void ExpectWhole(SManager& manager, const CRows& seen)
    {
        const auto numbered = seen.find(manager.numbered);
        ASSERT_NE(numbered, seen.end()) << Text(seen);
        const auto state =
            std::find_if(manager.states.begin(), manager.states.end(), [&](const CRows& rows) {
                return rows.at(manager.numbered).mask == numbered->second.mask;
            });
        ASSERT_NE(state, manager.states.end()) << "a SET that was acknowledged is lost:\n"
                                               << Text(seen) << "instead of at least\n"
                                               << Text(manager.states.front());
        const CRows kept = Kept(*state);
        EXPECT_EQ(Text(seen), Text(kept));
        m_cutOff += static_cast<int>(manager.states.end() - state) - 1;
        m_forgotten += static_cast<int>(state->size() - kept.size());
        manager.states = {kept};
    }

    std::mt19937 m_random;
    TempDir m_directory;
    ConfigFile m_file{"agentAddress = \"udp:127.0.0.1:0\"\n"
                      "[[view]]\nname = \"k\"\ninclude = [\"1.3.0\", \"1.3.8\", \"1.3.16\"]\n"
                      "[[user]]\nname = \"anyone\"\nread = \"everything\"\n"
                      "[[community]]\nname = \"boss\"\nread = \"everything\"\n"
                      "write = \"everything\"\n"};
    // Places for all managers' SETs at once.
    const Arguments m_line{VKAGENTD,   "--store",     m_directory.File("store.db"),
                           "--config", m_file.Name(), "--workers",
                           "8"};
    SManager m_managers[kManagers];
    int m_number = 0;
    bool m_hasEvents = false;
    ber::Bytes m_engineId;
    int m_boots = 0;
    int m_acknowledged = 0;
    int m_cutOff = 0;
    int m_forgotten = 0;
};
