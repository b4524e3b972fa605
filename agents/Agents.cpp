// The registry of agents, and its console commands.
#include <vkmibh/agents.h>
#include <vkmibh/cmdline.h>
#include <vkmibh/timer.h>

#include "console/CliText.h"
#include "foundation/HostCall.h"
#include "foundation/TextWriter.h"

namespace VLK {

namespace {

enum ECommand { eCmdAgents = 0, eCmdAgentParams = 1 };

// CONTRACT: the blanks before the line ends belong to the text.
constexpr char szCLIHelpAgents[] = "\nUsage:\n"
                                   " agents -l                  list registered agents\n"
                                   " agents -s[<agentName>]     suspend agent(s) \n"
                                   " agents -r[<agentName>]     resume agent(s) \n";

// One of an agent's operations that take the flag alone.
using Operation = int (BAgent::*)(int);

int Call(BAgent& agent, Operation operation)
{
    return HostCall([&] { return (agent.*operation)(0); }, kAgentThrew);
}

int CallNamed(const BAgents& agents, const BString& name, Operation operation)
{
    BAgent* const agent = agents.GetAgent(name);
    return agent ? Call(*agent, operation) : kAgentUnknown;
}

// Calls every agent in the order of the names and gives the last failure.
int CallAll(const BAgents& agents, Operation operation)
{
    int result = 0;
    for (int i = 0; i < agents.GetNumAgents(); ++i) {
        const int status = Call(*agents.AgentAt(i), operation);
        if (status != 0)
            result = status;
    }
    return result;
}

// Calls the agents in the order of the names until one fails.
int CallUntilFailure(const BAgents& agents, Operation operation)
{
    int status = 0;
    for (int i = 0; status == 0 && i < agents.GetNumAgents(); ++i)
        status = Call(*agents.AgentAt(i), operation);
    return status;
}

} // namespace

const SCmdMapEntry BAgents::s_cliEntries[] = {
    {eCmdAgents, "agents", nullptr, "-l | -s | -r"},
    {eCmdAgentParams, "agparams", "Display agent params", "[<agentName>]"},
    {-1, nullptr, nullptr, nullptr},
};
// CONTRACT: the quote characters belong to the name; console messages show it so.
const char BAgents::s_cmdHandlerName[] = "\"BAgents\"";

BAgent::~BAgent() = default;

ITrapSender::~ITrapSender() = default;

BAgents::BAgents(BTime& time) : m_time(time) {}

BAgents::~BAgents() = default;

int BAgents::Register(const BString& name, BAgent* agent)
{
    if (GetAgent(name))
        return kAgentNameTaken;
    if (!agent)
        return kAgentNotStored;
    for (int i = 0; i < GetNumAgents(); ++i) {
        if (AgentAt(i) == agent)
            return kAgentRegistered;
    }
    return m_agents.Insert(name, agent) ? 0 : kAgentNotStored;
}

BAgent* BAgents::GetAgent(const BString& name) const
{
    const int index = m_agents.Find(name);
    return index < 0 ? nullptr : AgentAt(index);
}

BAgent* BAgents::AgentAt(int index) const { return static_cast<BAgent*>(m_agents.DataAt(index)); }

int BAgents::Init() { return CallAll(*this, &BAgent::Init); }

int BAgents::Start()
{
    m_time.RecordStartTime();
    return CallAll(*this, &BAgent::Start);
}

int BAgents::Stop() { return CallUntilFailure(*this, &BAgent::Stop); }

int BAgents::Suspend() { return CallUntilFailure(*this, &BAgent::Suspend); }

int BAgents::Suspend(const BString& name) { return CallNamed(*this, name, &BAgent::Suspend); }

int BAgents::Resume() { return CallUntilFailure(*this, &BAgent::Resume); }

int BAgents::Resume(const BString& name) { return CallNamed(*this, name, &BAgent::Resume); }

// Takes no memory, so that a trap that tells of its lack goes out as well.
void BAgents::SendTrap(const BTrap& trap, const char* agentName)
{
    for (int i = 0; i < GetNumAgents(); ++i) {
        if (!agentName || IsText(m_agents.KeyAt(i), agentName))
            HostCall([&] { return AgentAt(i)->SendTrap(trap, 0); }, 0);
    }
}

int BAgents::CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                        const BSecurityParams&, const BString&)
{
    // CONTRACT: a word that is no command is reported and then runs as `agents`, the
    // command with id 0; the console gives only words that it has found.
    const auto execute = [&] {
        Execute(CmdId(cmd, out), out, args);
        return 0;
    };
    return HostCall(execute, -1);
}

void BAgents::Execute(int command, ICmdStream& out, const BStringArray& args)
{
    const BString none;
    const BString& argument = args.Count() > 0 ? args[0] : none;
    if (command == eCmdAgentParams)
        DumpParams(argument, out);
    else if (command != eCmdAgents)
        WriteText(out, szCLIHelpAgents);
    else if (args.Count() == 0)
        List(out);
    else
        ExecuteAgents(out, argument);
}

void BAgents::ExecuteAgents(ICmdStream& out, const BString& argument)
{
    char letter = 0; // stays so when the argument is no switch
    BString name;
    BCmdLineParser::SplitSwitch(argument, letter, name);
    if (letter == 'l') {
        List(out);
    } else if (letter == 's') {
        const int status = name.empty() ? Suspend() : Suspend(name);
        WriteText(out, status == 0 ? "Agent(s) suspended.\n" : "Failed to suspend agent(s).\n");
    } else if (letter == 'r') {
        const int status = name.empty() ? Resume() : Resume(name);
        WriteText(out, status == 0 ? "Agent(s) resumed.\n" : "Failed to resume agent(s).\n");
    } else {
        WriteText(out, "Unknown argument '", argument, "'\n");
        WriteText(out, szCLIHelpAgents);
    }
}

void BAgents::List(ICmdStream& out) const
{
    BString text;
    {
        CTextWriter writer(text);
        writer.Put(GetNumAgents() == 0 ? "There are no registered agents\n"
                                       : "Registered agents:\n");
        for (int i = 0; i < GetNumAgents(); ++i) {
            writer.Put(' ');
            writer.PutNumber(i + 1);
            writer.Put(". ");
            writer.Put(m_agents.KeyAt(i));
            writer.Put('\n');
        }
        writer.Put('\n');
    }
    if (!text.empty())
        out.Write(text);
}

void BAgents::DumpParams(const BString& name, ICmdStream& out) const
{
    if (name.empty()) {
        for (int i = 0; i < GetNumAgents(); ++i)
            DumpParamsAt(i, out);
        return;
    }
    const int index = m_agents.Find(name);
    if (index < 0)
        WriteText(out, "Unknown agent '", name, "'\n");
    else
        DumpParamsAt(index, out);
}

void BAgents::DumpParamsAt(int index, ICmdStream& out) const
{
    BAgent* const agent = AgentAt(index);
    const BString params = HostCall([agent] { return agent->GetParams(); }, BString());
    WriteText(out, "*** ", m_agents.KeyAt(index), "\n", params, "\n");
}

const char* BAgents::CmdGetHndlrName() const { return s_cmdHandlerName; }

const SCmdMapEntry* BAgents::CmdGetMap() const { return s_cliEntries; }

} // namespace VLK
