#include <algorithm>
#include <vkmibh/testing/module.h>

namespace VLK {
namespace Test {

namespace {

constexpr char kNeighbourRoot[] = "1.3.6.1.4.1.32473.99";
constexpr char kNeighbour[] = ".1.3.6.1.4.1.32473.99.1.0";

std::string Lines(const std::vector<std::string>& lines)
{
    std::string all;
    for (const std::string& line : lines)
        all += "  " + line + "\n";
    return all;
}

std::string Changed(const std::string& what, const std::vector<std::string>& before,
                    const std::vector<std::string>& after, const std::string& cure)
{
    return "after " + what + " the module is not as it was; before\n" + Lines(before) + "after\n" +
           Lines(after) + cure + "\n";
}

std::string StatusText(int status, int errorIndex)
{
    return std::string(LabelErrorStatus(status)) + " (" + std::to_string(status) + ") at binding " +
           std::to_string(errorIndex);
}

} // namespace

ModuleClient::ModuleClient(BMibImplGroup& module, const std::string& root)
    : neighbour('N', kNeighbourRoot, log), m_group(&module), m_root(root + ".")
{
    if (!handler.RegisterGroup(m_group))
        m_problem += "RegisterGroup() was refused: GetImplAt() gave null\n";
    const int started = m_group->Init();
    if (started != m_group->GetNumImpls())
        m_problem += "Init() started " + std::to_string(started) + " implementations of " +
                     std::to_string(m_group->GetNumImpls()) + "\n";
    AddNeighbour();
}

ModuleClient::ModuleClient(BMibSubtreeHandler& module)
    : neighbour('N', kNeighbourRoot, log), m_alone(&module), m_root(TextOf(module.Oid()) + ".")
{
    if (!handler.RegisterSubtreeHandler(m_alone))
        m_problem += "RegisterSubtreeHandler() was refused: it has no identifier\n";
    if (auto* const impl = dynamic_cast<BMibImpl*>(m_alone))
        impl->Initialize();
    AddNeighbour();
}

ModuleClient::~ModuleClient()
{
    handler.UnregisterSubtreeHandler(&neighbour);
    if (m_group)
        handler.UnregisterGroup(m_group);
    else
        handler.UnregisterSubtreeHandler(m_alone);
}

void ModuleClient::AddNeighbour()
{
    if (!handler.RegisterSubtreeHandler(&neighbour))
        m_problem +=
            std::string("the module is at the neighbour's place, ") + kNeighbourRoot + "\n";
}

int ModuleClient::Set(const Bindings& bindings)
{
    Client client(handler);
    Bindings whole(bindings);
    for (Binding& binding : whole)
        binding.name = Whole(binding.name);
    const int status = client.Set(whole);
    errorIndex = client.errorIndex;
    return status;
}

int ModuleClient::SetInVain(Bindings bindings, ESnmpSetOpCode phase)
{
    neighbour.failAt = {{phase, static_cast<int>(bindings.size())}};
    bindings.push_back({kNeighbour, Number(1)});
    const int status = Set(bindings);
    neighbour.failAt.clear();
    return status;
}

std::string ModuleClient::Get(const std::string& name)
{
    Client client(handler);
    const int status = client.Get({Whole(name).c_str()});
    return status == 0 ? client.TextAt(0) : "status " + std::to_string(status);
}

std::vector<std::string> ModuleClient::Walk()
{
    std::vector<std::string> all =
        Client(handler).Walk(m_root.substr(0, m_root.size() - 1).c_str());
    for (std::string& line : all)
        line.erase(0, m_root.size());
    return all;
}

std::string ModuleClient::CheckUndo(const Bindings& bindings)
{
    const std::vector<std::string> before = Walk();
    const int atEnd = static_cast<int>(bindings.size()) + 1;
    SetInVain(bindings, eSetTest);
    const std::vector<std::string> tested = Walk();
    if (tested != before)
        return Changed("a SET that was only tested", before, tested,
                       "change nothing before eSetCommit");
    const std::size_t logged = log.size();
    const int failed = SetInVain(bindings);
    if (failed != eSnmpCommitFailed || errorIndex != atEnd) {
        const bool reached = std::count(log.begin() + static_cast<std::ptrdiff_t>(logged),
                                        log.end(), SetLogLine('N', eSetCommit, atEnd - 1, 1)) > 0;
        return "the SET was to fail with commitFailed at binding " + std::to_string(atEnd) +
               ", behind the module's own; it ended with " + StatusText(failed, errorIndex) +
               (reached ? ": let the module's eSetUndo return eSnmpNoError\n"
                        : ": take bindings that the module accepts\n");
    }
    const std::vector<std::string> undone = Walk();
    if (undone != before)
        return Changed("the undo", before, undone, "put back in eSetUndo what eSetCommit changed");
    const int status = Set(bindings);
    if (status != eSnmpNoError)
        return "the SET has to succeed when nothing fails; it ended with " +
               StatusText(status, errorIndex) + "\n";
    if (Walk() == before)
        return "the SET changed nothing, so that its undo proves nothing: set other values\n";
    return "";
}

std::string ModuleClient::Whole(const std::string& name) const
{
    return name[0] == '.' ? name.substr(1) : m_root + name;
}

} // namespace Test
} // namespace VLK
