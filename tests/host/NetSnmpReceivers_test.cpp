// Notifications as their receivers see them, datagram by datagram.
#include "host/wire/NetSnmpReceivers.h"

#include "host/HostError.h"

#include "Ber.h"
#include "EngineTest.h"

#include "tests/support/NoDescriptors.h"
#include "tests/support/Oids.h"

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <poll.h>

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

namespace {

enum EPdu { kResponse = 0xa2, kTrapV1 = 0xa4, kInform = 0xa6, kTrapV2 = 0xa7 };

// A receiver's socket on a port of its own.
class Listener {
public:
    Listener() : m_socket(socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in own = {};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof own;
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&own), length), 0);
        EXPECT_EQ(getsockname(m_socket, reinterpret_cast<sockaddr*>(&own), &length), 0);
        m_port = ntohs(own.sin_port);
    }
    ~Listener() { Close(); }
    void Close()
    {
        if (m_socket >= 0)
            close(m_socket);
        m_socket = -1;
    }

    BTransportAddress Address() const
    {
        return Test::Address("udp:127.0.0.1:" + std::to_string(m_port));
    }
    // Empty when nothing comes in that time.
    ber::Bytes Receive(int milliseconds = 10000)
    {
        pollfd wait{m_socket, POLLIN, 0};
        if (poll(&wait, 1, milliseconds) != 1)
            return "";
        ber::Bytes datagram(65536, '\0');
        socklen_t length = sizeof m_sender;
        ssize_t count = recvfrom(m_socket, datagram.data(), datagram.size(), 0,
                                 reinterpret_cast<sockaddr*>(&m_sender), &length);
        datagram.resize(count > 0 ? static_cast<size_t>(count) : 0);
        return datagram;
    }
    // To who sent the last one; from this socket or another.
    void Answer(const ber::Bytes& datagram, const Listener* from = nullptr) const
    {
        EXPECT_EQ(sendto(from ? from->m_socket : m_socket, datagram.data(), datagram.size(), 0,
                         reinterpret_cast<const sockaddr*>(&m_sender), sizeof m_sender),
                  static_cast<ssize_t>(datagram.size()));
    }

private:
    int m_socket;
    unsigned m_port = 0;
    sockaddr_in m_sender = {};
};

SNotification Notification(const char* trapOid = "1.3.6.1.4.1.32473.5.0.17")
{
    SNotification notification;
    notification.trapOid = MakeOid(trapOid);
    notification.enterprise = MakeOid("1.3.6.1.4.1.32473.5");
    notification.generic = eTrapEnterpriseSpecific;
    notification.specific = 17;
    notification.upTime = 4000000000u;
    BObjectSyntax value;
    value.SetInt(-5);
    notification.bindings.Append(MakeOid("1.3.6.1.4.1.32473.5.1.0"), value);
    return notification;
}

ber::Bytes Binding() { return ber::Binding({1, 3, 6, 1, 4, 1, 32473, 5, 1, 0}, "\2\1\xfb"); }

// sysUpTime.0 and snmpTrapOID.0 come first.
ber::Bytes Bindings()
{
    return ber::Binding({1, 3, 6, 1, 2, 1, 1, 3, 0},
                        ber::Tlv(0x43, ber::Bytes("\0\xee\x6b\x28\0", 5))) +
           ber::Binding({1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0},
                        ber::ObjectId({1, 3, 6, 1, 4, 1, 32473, 5, 0, 17})) +
           Binding();
}

ber::Bytes Acknowledgement(const ber::Reply& inform, int status = 0)
{
    return ber::Message(1, "traps", kResponse, inform.requestId, status, 0, inform.bindings);
}

class NetSnmpReceivers : public EngineTest {
protected:
    unsigned Add(EProtocol protocol, bool isInform = false)
    {
        SReceiver receiver;
        receiver.address = listener.Address();
        receiver.protocol = protocol;
        receiver.community = "traps";
        receiver.isInform = isInform;
        receiver.timeout = timeout;
        receiver.retries = retries;
        return Engine().AddReceiver(receiver, m_delivery);
    }
    ber::Bytes Sent(unsigned receiver)
    {
        Engine().Notify(receiver, Notification());
        ber::Bytes datagram;
        ServeWhile([&] {
            datagram = listener.Receive();
            EXPECT_TRUE(Eventually([&] { return delivery.sent == 1; }));
        });
        return datagram;
    }
    ber::Reply Inform() { return ber::ReadReply(listener.Receive()); }

    Listener listener;
    std::chrono::milliseconds timeout{60000};
    unsigned retries = 0;
    std::shared_ptr<SDelivery> m_delivery = std::make_shared<SDelivery>();
    SDelivery& delivery = *m_delivery;
};

} // namespace

TEST_F(NetSnmpReceivers, ANotificationOfTheSecondVersionBeginsWithItsTimeAndIdentity)
{
    ber::Bytes datagram = Sent(Add(eSnmpV2c));
    ber::Reply trap = ber::ReadReply(datagram);
    ASSERT_TRUE(trap.ok);
    EXPECT_EQ(trap.version, 1);
    EXPECT_EQ(trap.community, "traps");
    EXPECT_EQ(trap.pduType, kTrapV2);
    EXPECT_EQ(trap.bindings, Bindings());
}

TEST_F(NetSnmpReceivers, ATrapOfTheFirstVersionHasEnterpriseAddressNumbersAndTime)
{
    ber::Reader outer(Sent(Add(eSnmpV1)));
    ber::Reader message(outer.Element());
    EXPECT_EQ(message.Number(), 0);
    EXPECT_EQ(message.Element(), "traps");
    EXPECT_EQ(message.Tag(), kTrapV1);
    ber::Reader pdu(message.Element());
    EXPECT_EQ(pdu.Element(), ber::Name({1, 3, 6, 1, 4, 1, 32473, 5}));
    EXPECT_EQ(pdu.Element(), ber::Bytes("\x7f\0\0\1", 4));
    EXPECT_EQ(pdu.Number(), 6);
    EXPECT_EQ(pdu.Number(), 17);
    EXPECT_EQ(pdu.Tag(), 0x43);
    EXPECT_EQ(pdu.Element(), ber::Bytes("\0\xee\x6b\x28\0", 5));
    EXPECT_EQ(pdu.Element(), Binding());
    EXPECT_TRUE(outer.Ok() && message.Ok() && pdu.Ok() && pdu.AtEnd());
}

TEST_F(NetSnmpReceivers, AReceiverThatNoSocketIsLeftForIsRefusedWithTheReason)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer of undefined behaviour needs descriptors itself";
#endif
    Engine();
    std::string error;
    try {
        const NoDescriptors none;
        Add(eSnmpV2c);
    } catch (const BHostError& refused) {
        error = refused.what();
    }
    EXPECT_EQ(error, "cannot send to " + listener.Address().ToString() + ": Too many open files");
}

TEST_F(NetSnmpReceivers, AnAcknowledgedInformIsNotSentAgain)
{
    timeout = std::chrono::milliseconds(50);
    retries = 200;
    unsigned receiver = Add(eSnmpV2c, true);
    unsigned packets = Counters().inPkts;
    Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        ber::Reply inform = Inform();
        EXPECT_EQ(inform.pduType, kInform);
        EXPECT_EQ(inform.bindings, Bindings());
        listener.Answer(Acknowledgement(inform));
        EXPECT_TRUE(Eventually([&] { return delivery.acknowledged == 1; }));
        while (!listener.Receive(150).empty()) {
        }
        EXPECT_EQ(listener.Receive(150), "");
    });
    EXPECT_EQ(delivery.sent, 1u);
    EXPECT_EQ(delivery.givenUp, 0u);
    EXPECT_EQ(Counters().inPkts - packets, 1u) << "the acknowledgement is a packet that came";
}

TEST_F(NetSnmpReceivers, RubbishBeforeTheAcknowledgementIsCountedAndDropped)
{
    const unsigned receiver = Add(eSnmpV2c, true);
    const unsigned errors = Counters().inASNParseErrs;
    const unsigned versions = Counters().inBadVersions;
    Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        const ber::Reply inform = Inform();
        listener.Answer("rubbish");
        listener.Answer(ber::Message(7, "traps", kResponse, inform.requestId, 0, 0, ""));
        listener.Answer(Acknowledgement(inform));
        EXPECT_TRUE(Eventually([&] { return delivery.acknowledged == 1; }));
    });
    EXPECT_EQ(Counters().inASNParseErrs - errors, 1u);
    EXPECT_EQ(Counters().inBadVersions - versions, 1u);
}

TEST_F(NetSnmpReceivers, AnInformIsSentAgainUnderItsRequestIdAndThenGivenUp)
{
    timeout = std::chrono::milliseconds(20);
    retries = 2;
    unsigned receiver = Add(eSnmpV2c, true);
    Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        ber::Bytes first = listener.Receive();
        EXPECT_EQ(listener.Receive(), first);
        EXPECT_EQ(listener.Receive(), first);
        EXPECT_TRUE(Eventually([&] { return delivery.givenUp == 1; }));
        EXPECT_EQ(listener.Receive(100), "");
    });
    EXPECT_EQ(delivery.sent, 1u);
    EXPECT_EQ(delivery.retried, 2u);
    EXPECT_EQ(delivery.acknowledged, 0u);
}

TEST_F(NetSnmpReceivers, OnlyTheReceiverItselfAcknowledges)
{
    unsigned receiver = Add(eSnmpV2c, true);
    Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        ber::Reply inform = Inform();
        Listener stranger;
        listener.Answer(Acknowledgement(inform), &stranger);
        ber::Reply other = inform;
        other.requestId += 1000;
        listener.Answer(Acknowledgement(other));
        GiveOthersTime();
        EXPECT_EQ(delivery.acknowledged, 0u);
        listener.Answer(Acknowledgement(inform));
        EXPECT_TRUE(Eventually([&] { return delivery.acknowledged == 1; }));
    });
}

TEST_F(NetSnmpReceivers, AnInformThatIsAnsweredWithAnErrorIsGivenUp)
{
    retries = 5;
    unsigned receiver = Add(eSnmpV2c, true);
    Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        listener.Answer(Acknowledgement(Inform(), 5));
        EXPECT_TRUE(Eventually([&] { return delivery.givenUp == 1; }));
    });
    EXPECT_EQ(delivery.acknowledged, 0u);
    EXPECT_EQ(delivery.retried, 0u);
}

TEST_F(NetSnmpReceivers, AnInformThatTheNetworkDoesNotTakeIsTriedAgain)
{
    SReceiver broadcast; // which the system refuses to send to
    broadcast.address = VLK::Test::Address("udp:255.255.255.255:162");
    broadcast.community = "traps";
    broadcast.isInform = true;
    broadcast.timeout = std::chrono::minutes(1);
    broadcast.retries = 0;
    auto waiting = std::make_shared<SDelivery>();
    auto triedTwice = std::make_shared<SDelivery>();
    unsigned first = Engine().AddReceiver(broadcast, waiting);
    broadcast.timeout = std::chrono::milliseconds(20);
    broadcast.retries = 1;
    unsigned second = Engine().AddReceiver(broadcast, triedTwice);
    unsigned third = Add(eSnmpV2c);
    for (unsigned receiver : {first, second, third})
        Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        EXPECT_NE(listener.Receive(), "") << "the others were sent before, if they were";
        EXPECT_TRUE(Eventually([&] { return triedTwice->failed == 1; }));
    });
    EXPECT_EQ(waiting->failed, 0u) << "it may go later";
    for (const auto& delivered : {waiting, triedTwice}) {
        EXPECT_EQ(delivered->sent, 0u);
        EXPECT_EQ(delivered->retried, 0u);
        EXPECT_EQ(delivered->givenUp, 0u) << "those are of informs that were sent";
    }
}

TEST_F(NetSnmpReceivers, TheQueueIsBoundedAndWhatOverflowsIsCounted)
{
    unsigned receiver = Add(eSnmpV2c);
    constexpr unsigned kQueued = BNetSnmpReceivers::kMostQueued;
    for (unsigned i = 0; i < kQueued + 7; ++i)
        Engine().Notify(receiver, Notification());
    EXPECT_EQ(delivery.overflowed, 7u);
    ServeWhile([&] { EXPECT_TRUE(Eventually([&] { return delivery.sent == kQueued; })); });
    EXPECT_EQ(delivery.failed, 0u);
    Engine().Notify(receiver, Notification());
    EXPECT_EQ(delivery.overflowed, 7u) << "there is room again";
    ServeWhile([&] { EXPECT_TRUE(Eventually([&] { return delivery.sent == kQueued + 1; })); });
}

TEST_F(NetSnmpReceivers, InformsThatAreNotAcknowledgedAreBounded)
{
    unsigned receiver = Add(eSnmpV2c, true);
    constexpr unsigned kPending = BNetSnmpReceivers::kMostPending;
    for (unsigned i = 0; i < kPending + 3; ++i)
        Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        EXPECT_TRUE(Eventually([&] { return delivery.overflowed == 3; }));
        EXPECT_EQ(delivery.sent, kPending);
        ber::Reply first = Inform();
        listener.Answer(Acknowledgement(first));
        EXPECT_TRUE(Eventually([&] { return delivery.acknowledged == 1; }));
        Engine().Notify(receiver, Notification());
        EXPECT_TRUE(Eventually([&] { return delivery.sent == kPending + 1; }));
    });
}

TEST_F(NetSnmpReceivers, SuspendedNothingIsSentAndNothingAgain)
{
    timeout = std::chrono::milliseconds(50);
    retries = 200;
    unsigned receiver = Add(eSnmpV2c, true);
    Engine().Notify(receiver, Notification());
    ServeWhile([&] {
        EXPECT_NE(listener.Receive(), "");
        delivery.isSuspended = true;
        EXPECT_TRUE(Eventually([&] { return delivery.givenUp == 1; }));
        Engine().Notify(receiver, Notification());
        while (!listener.Receive(100).empty()) {
        }
        EXPECT_EQ(listener.Receive(200), "");
        EXPECT_EQ(delivery.sent, 1u);
        delivery.isSuspended = false;
        Engine().Notify(receiver, Notification());
        EXPECT_NE(listener.Receive(), "");
    });
    EXPECT_EQ(delivery.sent, 2u);
}

TEST_F(NetSnmpReceivers, WhatNoDatagramHoldsHasFailed)
{
    unsigned receiver = Add(eSnmpV2c);
    unsigned informed = Add(eSnmpV2c, true);
    for (unsigned number : {receiver, informed}) {
        SNotification large = Notification();
        BObjectSyntax octets;
        octets.SetOctets(BOctetString(65500, nullptr));
        large.bindings.Append(MakeOid("1.3.6.1.4.1.32473.5.2.0"), octets);
        Engine().Notify(number, std::move(large));
    }
    ServeWhile([&] { EXPECT_TRUE(Eventually([&] { return delivery.failed == 2; })); });
    EXPECT_EQ(delivery.sent, 0u);
}

TEST_F(NetSnmpReceivers, NotifyingThreadsNeedNotTakeTurns)
{
    unsigned receiver = Add(eSnmpV2c);
    constexpr unsigned kThreads = 4;
    constexpr unsigned kEach = 200;
    ServeWhile([&] {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < kThreads; ++i)
            threads.emplace_back([&] {
                for (unsigned j = 0; j < kEach; ++j)
                    Engine().Notify(receiver, Notification());
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_TRUE(Eventually([&] {
            return delivery.sent + delivery.failed + delivery.overflowed == kThreads * kEach;
        }));
    });
    EXPECT_GE(delivery.sent, BNetSnmpReceivers::kMostQueued);
}

TEST_F(NetSnmpReceivers, AReceiverThatComesWhileTheEngineServesIsSentToAndHeard)
{
    ServeWhile([&] {
        GiveOthersTime();
        unsigned receiver = Add(eSnmpV2c, true);
        Engine().Notify(receiver, Notification());
        listener.Answer(Acknowledgement(Inform()));
        EXPECT_TRUE(Eventually([&] { return delivery.acknowledged == 1; }));
    });
}

TEST_F(NetSnmpReceivers, AReceiverThatGoesIsSentNothingMore)
{
    timeout = std::chrono::milliseconds(50);
    retries = 200;
    unsigned gone = Add(eSnmpV2c, true);
    auto other = std::make_shared<SDelivery>();
    std::swap(m_delivery, other);
    unsigned kept = Add(eSnmpV2c);
    Engine().Notify(gone, Notification());
    ServeWhile([&] {
        EXPECT_EQ(Inform().pduType, kInform);
        Engine().RemoveReceiver(gone);
        Engine().Notify(gone, Notification());
        Engine().Notify(kept, Notification());
        EXPECT_TRUE(Eventually([&] { return m_delivery->sent == 1; }));
        while (ber::ReadReply(listener.Receive()).pduType != kTrapV2) {
        }
        EXPECT_EQ(listener.Receive(200), "");
    });
    EXPECT_EQ(other->sent, 1u);
    EXPECT_EQ(other->overflowed, 0u);
    EXPECT_EQ(other.use_count(), 1) << "its session has ended";
    EXPECT_NE(Add(eSnmpV2c), gone);
}

// Registering is for any thread, while others raise notifications.
TEST_F(NetSnmpReceivers, ReceiversComeAndGoWhileNotificationsAreSent)
{
    std::atomic<bool> isOver{false};
    std::atomic<unsigned> latest{Add(eSnmpV2c)};
    ServeWhile([&] {
        std::thread raising([&] {
            while (!isOver)
                Engine().Notify(latest, Notification());
        });
        for (int i = 0; i < 100; ++i) {
            unsigned next = Add(eSnmpV2c, i % 2 == 0);
            Engine().RemoveReceiver(latest.exchange(next));
        }
        isOver = true;
        raising.join();
        Engine().RemoveReceiver(latest);
        EXPECT_TRUE(Eventually([&] { return m_delivery.use_count() == 1; }));
    });
}
