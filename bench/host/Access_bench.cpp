// What a decision of the access control costs, and a request with it, from the
// decoded request to the answer. Built where the agent is built too:
//
//   cmake --preset release -DVKMIBH_BUILD_BENCH=ON
#include "bench/AllocScope.h"
#include "bench/host/Serving.h"
#include "host/RequestTransaction.h"

namespace VLK::host {
namespace {

constexpr const char* kSystem = "1.3.6.1.2.1.1";
constexpr const char* kSysServices = "1.3.6.1.2.1.1.7.0";

SRequest GetOf(const char* name)
{
    SRequest request = RequestFrom("udp:127.0.0.1:4000");
    request.pduType = ePduGet;
    request.community = "public";
    request.bindings.Append(BObjectIdentifier(BString(name)));
    return request;
}

SRequest SetOfContact()
{
    SRequest request = GetOf("1.3.6.1.2.1.1.4.0");
    request.pduType = ePduSet;
    request.community = "private";
    request.bindings[0].Value().SetOctets(BString("someone@example.org"));
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

// The floor of a decision: whether the view of it covers the name.
void DecideFloor(benchmark::State& state)
{
    BFilterTable views(nullptr);
    const BString view("everything");
    const BObjectIdentifier name{BString(kSysServices)};
    if (!views.Insert(view, BObjectIdentifier(BString("1")), BOctetString(), eFilterIncluded,
                      eStorageVolatile, eRowActive, false))
        state.SkipWithError("no row");
    for (int i = 0; i < 100; ++i)
        views.Filter(view, name);
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (!views.Filter(view, name))
            state.SkipWithError("not in the view");
    }
}
BENCHMARK(DecideFloor);

// Floors of requests: the handler alone, without an access control and a dispatcher. As many
// requests follow one another as the dispatcher makes of one.
template <class TAgain>
void Query(benchmark::State& state, SRequest request, int count, TAgain again)
{
    BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    const BObjectIdentifier first = request.bindings[0].Name();
    BSecurityParams security;
    BString context;
    const AllocScope allocs(state);
    for (auto _ : state) {
        BRequestTransaction transaction(request, security, context);
        for (int i = 0; i < count; ++i) {
            int errorIndex = 0;
            again(request.bindings[0]);
            if (handler.Query(request.pduType, static_cast<int>(transaction.Id()), security,
                              context, request.bindings, errorIndex) != eSnmpNoError)
                state.SkipWithError("not answered");
        }
        request.bindings[0].Name() = first;
    }
}

void AskAnew(BVarBind& binding) { binding.Value().SetNull(); }

void QueryGet(benchmark::State& state) { Query(state, GetOf(kSysServices), 1, AskAnew); }
BENCHMARK(QueryGet);

void QueryTenNexts(benchmark::State& state)
{
    SRequest request = GetOf(kSystem);
    request.pduType = ePduGetNext;
    Query(state, std::move(request), 10, AskAnew);
}
BENCHMARK(QueryTenNexts);

void QuerySet(benchmark::State& state)
{
    Query(state, SetOfContact(), 1, [](BVarBind&) {});
}
BENCHMARK(QuerySet);

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
        SRequest request = GetOf(kSystem);
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
    SRequest request = SetOfContact();
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
