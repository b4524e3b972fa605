// What a decision of the access control costs, and a request with it, from the
// decoded request to the answer. Built where the agent is built too:
//
//   cmake --preset release -DVKMIBH_BUILD_BENCH=ON
#include "bench/AllocScope.h"
#include "bench/host/Serving.h"
#include "host/RequestTransaction.h"

namespace VLK::host {
namespace {

constexpr const char* kSysServices = "1.3.6.1.2.1.1.7.0";

SRequest GetOf(const char* name)
{
    SRequest request = RequestFrom("udp:127.0.0.1:4000");
    request.pduType = ePduGet;
    request.community = "public";
    request.bindings.Append(BObjectIdentifier(BString(name)));
    return request;
}

bool IsAllowed(BAccess& access, SRequest& request)
{
    BCommunities::EAdmission admission;
    const BRightsOfRequest rights(access);
    const SRequester* requester =
        rights->communities.Admit(request.community, request.remote, admission);
    return rights->vacm
               .Decide(requester->v2c, eViewRead, requester->context, request.bindings[0].Name())
               .answer == eVacmAllowed;
}

void Decide(benchmark::State& state)
{
    BAccess access(WithPublic(static_cast<int>(state.range(0))), nullptr);
    SRequest request = GetOf(kSysServices);
    for (int i = 0; i < 100; ++i) // the views take notice that they rest
        IsAllowed(access, request);
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (!IsAllowed(access, request))
            state.SkipWithError("refused");
    }
}
BENCHMARK(Decide)->Arg(0)->Arg(100)->Arg(10000);

// The floor: the request without an access control and a dispatcher.
void QueryGet(benchmark::State& state)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    SRequest request = GetOf(kSysServices);
    BSecurityParams security;
    BString context;
    const AllocScope allocs(state);
    for (auto _ : state) {
        BRequestTransaction transaction(request, security, context);
        int errorIndex = 0;
        request.bindings[0].Value().SetNull();
        if (handler.Query(ePduGet, static_cast<int>(transaction.Id()), security, context,
                          request.bindings, errorIndex) != eSnmpNoError)
            state.SkipWithError("GET failed");
    }
}
BENCHMARK(QueryGet);

void DispatchGet(benchmark::State& state)
{
    SServing serving;
    SRequest request = GetOf(kSysServices);
    SResponse response;
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (!serving.Handle(request, response) || response.bindings.size() != 1)
            state.SkipWithError("GET failed");
        // The answer took the place of the request's binding: it is put back.
        request.bindings[0] = std::move(response.bindings[0]);
        request.bindings[0].Value().SetNull();
    }
}
BENCHMARK(DispatchGet);

// Ten steps through the system group.
void DispatchBulk(benchmark::State& state)
{
    SServing serving;
    SResponse response;
    const AllocScope allocs(state);
    for (auto _ : state) {
        SRequest request = GetOf("1.3.6.1.2.1.1");
        request.pduType = ePduGetBulk;
        request.maxRepetitions = 10;
        if (!serving.Handle(request, response) || response.bindings.size() != 10)
            state.SkipWithError("GETBULK failed");
    }
}
BENCHMARK(DispatchBulk);

void DispatchSet(benchmark::State& state)
{
    SServing serving;
    SRequest request = GetOf("1.3.6.1.2.1.1.4.0");
    request.pduType = ePduSet;
    request.community = "private";
    request.bindings[0].Value().SetOctets(BString("someone@example.org"));
    SResponse response;
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (!serving.Handle(request, response) || response.status != eSnmpNoError)
            state.SkipWithError("SET failed");
    }
}
BENCHMARK(DispatchSet);

} // namespace
} // namespace VLK::host
