// The protocol engine in a test, with a handler that records.
#pragma once

#include "host/wire/NetSnmpEngine.h"

#include "tests/support/Threads.h"

#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace VLK {
namespace Test {

// Keeps the requests, and answers each with an echo, or with what no datagram holds.
class Recorder : public host::IRequestHandler {
public:
    std::vector<host::SRequest> requests;
    // Where there is one: on the request's thread, with the answer, to be changed or kept
    // waiting.
    std::function<void(const host::SRequest&, host::SResponse&)> onRequest;
    bool isTooLarge = false;        // the answer
    bool isTooLargeInstead = false; // the answer in place of one that cannot be sent

    bool Handle(host::SRequest& request, host::SResponse& response) override
    {
        static std::mutex lock; // a request that takes long runs beside the next
        {
            const std::lock_guard<std::mutex> guard(lock);
            requests.push_back(request);
        }
        Answer(isTooLarge, response);
        if (onRequest)
            onRequest(request, response);
        return true;
    }
    void AnswerInstead(int, const host::SRequest&, host::SResponse& response) override
    {
        Answer(isTooLargeInstead, response);
    }

private:
    static void Answer(bool isLarge, host::SResponse& response)
    {
        response = host::SResponse();
        response.echo = !isLarge;
        BVarBind binding(BObjectIdentifier(BString("1.3.6.1.2.1.1.1.0")));
        binding.Value().SetOctets(BOctetString(40000, nullptr));
        if (isLarge)
            response.bindings = {binding, binding};
    }
};

// One engine for all tests of a process: the wire library does not start twice
// without a leak.
class EngineTest : public testing::Test {
protected:
    void SetUp() override
    {
        Handler() = Recorder();
        ASSERT_EQ(pipe(m_stop), 0);
    }
    void TearDown() override
    {
        close(m_stop[0]);
        close(m_stop[1]);
    }

    static Recorder& Handler()
    {
        static Recorder recorder;
        return recorder;
    }
    static modules::SSnmpCounters& Counters()
    {
        static modules::SSnmpCounters counters;
        return counters;
    }
    static host::BNetSnmpEngine& Engine()
    {
        static host::BNetSnmpEngine engine(Handler(), Counters());
        return engine;
    }
    // What has to live as long as the engine.
    template <class T>
    static T& Kept()
    {
        static auto& all = *new std::deque<T>;
        return all.emplace_back();
    }

    // Serves until the call returns.
    template <class TWait>
    void ServeWhile(TWait wait)
    {
        std::thread serving([&] { Engine().Serve(m_stop[0]); });
        wait();
        Stop();
        serving.join();
        ForgetStop();
    }

    void ServeThoughStopped()
    {
        Stop();
        Engine().Serve(m_stop[0]);
        ForgetStop();
    }

    void Stop() { EXPECT_EQ(write(m_stop[1], "x", 1), 1); }

private:
    void ForgetStop()
    {
        char taken;
        EXPECT_EQ(read(m_stop[0], &taken, 1), 1);
    }

    int m_stop[2] = {-1, -1};
};

inline host::BTransportAddress Address(const std::string& text)
{
    host::BTransportAddress address;
    EXPECT_TRUE(address.Parse(text)) << text;
    return address;
}

} // namespace Test
} // namespace VLK
