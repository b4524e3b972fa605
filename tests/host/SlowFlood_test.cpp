// Managers that ask for slow requests all the time, fewer than there are threads for:
// whatever else there is to serve has its turn.
#include "tests/support/Oids.h"

#include "Ber.h"
#include "EngineTest.h"
#include "UdpClient.h"

#include <atomic>
#include <list>
#include <thread>

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

namespace {

constexpr int kManagers = 6;
// Longer than a request may have the role.
constexpr std::chrono::milliseconds kSlow{3};

ber::Bytes Get(int requestId)
{
    return ber::Message(1, "any", 0xa0, requestId, 0, 0, ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}));
}

// Each manager asks as soon as it has its answer.
class Flood {
public:
    explicit Flood(unsigned port)
    {
        for (int i = 0; i < kManagers; ++i)
            m_managers.emplace_back([this, port] { Ask(port); });
    }
    ~Flood()
    {
        m_goesOn = false;
        for (std::thread& manager : m_managers)
            manager.join();
    }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    bool IsUnderWay() const
    {
        return Eventually([&] { return m_answers >= 5 * kManagers; });
    }

private:
    void Ask(unsigned port)
    {
        const UdpClient manager(port);
        while (m_goesOn) {
            EXPECT_TRUE(manager.Send(Get(1)));
            m_answers += !manager.Receive(1000).empty();
        }
    }

    std::atomic<bool> m_goesOn{true};
    std::atomic<int> m_answers{0};
    std::list<std::thread> m_managers;
};

class SlowFlood : public EngineTest {
protected:
    unsigned Open() { return Engine().Open(Address("udp:127.0.0.1:0"), Kept<STraffic>()).Port(); }
    void BeSlowAt(unsigned port)
    {
        Handler().onRequest = [port](const SRequest& request, SResponse&) {
            if (request.local.Port() == port)
                std::this_thread::sleep_for(kSlow);
        };
    }
};

} // namespace

TEST_F(SlowFlood, OfOneAddressLeavesTheOthersTheirTurn)
{
    const unsigned ports[] = {Open(), Open(), Open()};
    for (const unsigned flooded : ports) {
        BeSlowAt(flooded);
        ServeWhile([&] {
            const Flood flood(flooded);
            ASSERT_TRUE(flood.IsUnderWay());
            for (const unsigned port : ports) {
                const UdpClient quick(port);
                for (int i = 0; i < 10; ++i) {
                    ASSERT_TRUE(quick.Send(Get(i)));
                    ASSERT_FALSE(quick.Receive(20000).empty()) << port << " of " << flooded;
                }
            }
        });
    }
}

TEST_F(SlowFlood, LeavesNotificationsTheirTurn)
{
    const unsigned flooded = Open();
    const auto delivery = std::make_shared<SDelivery>();
    SReceiver receiver;
    receiver.address = Address("udp:127.0.0.1:" + std::to_string(Open()));
    receiver.protocol = eSnmpV2c;
    receiver.community = "traps";
    const unsigned number = Engine().AddReceiver(receiver, delivery);
    BeSlowAt(flooded);
    ServeWhile([&] {
        const Flood flood(flooded);
        ASSERT_TRUE(flood.IsUnderWay());
        for (unsigned sent = 1; sent <= 10; ++sent) {
            SNotification notification;
            notification.trapOid = MakeOid("1.3.6.1.4.1.32473.5.0.17");
            Engine().Notify(number, std::move(notification));
            ASSERT_TRUE(Eventually([&] { return delivery->sent == sent; })) << sent;
        }
    });
    Engine().RemoveReceiver(number);
}
