// An operator who types explain, owners, stats and lastset, in process.
#pragma once

#include "host/RequestTransaction.h"
#include "host/config/ConfigFile.h"
#include "host/verbs/Verbs.h"

#include "tests/support/Oids.h"
#include "tests/support/ScriptedStream.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>

namespace VLK::host {

class VerbsTest : public testing::Test {
protected:
    class Saves : public ISetSaves {
    public:
        bool works = true;
        std::function<void()> onSave;
        void Hold() override {}
        bool SaveHeld() override
        {
            if (onSave)
                onSave();
            return works;
        }
    };

    explicit VerbsTest(const std::string& text = "") : VerbsTest(ReadConfigText(text, "f")) {}
    explicit VerbsTest(const SConfiguration& read)
        : configuration(WithConsole(read)), access(configuration, nullptr),
          dispatcher(handler, access, counters),
          verbs({handler, regions, access, dispatcher.Stats(), [this] { return load; },
                 [this] { return totals; }})
    {
        console.securityModel = eModelUsm;
        console.securityLevel = eNoAuthNoPriv;
    }

    static SConfiguration WithConsole(SConfiguration read)
    {
        OpenConsole(read);
        return read;
    }

    // What a line of words prints.
    std::string Type(const std::string& line)
    {
        std::istringstream stream(line);
        std::string command;
        stream >> command;
        std::vector<std::string> words;
        for (std::string word; stream >> word;)
            words.push_back(word);
        VLK::Test::ScriptedStream out;
        verbs.CmdExecute(out, VLK::Test::StringOf(command), VLK::Test::ArgsOf(words), console,
                         context);
        return out.Taken();
    }
    // The rest of the line that begins so.
    std::string Line(const std::string& command, const std::string& name)
    {
        std::istringstream lines(Type(command));
        for (std::string line; std::getline(lines, line);) {
            if (line.compare(0, name.size() + 1, name + " ") == 0)
                return line.substr(line.find_first_not_of(' ', name.size()));
        }
        return "(no " + name + ")";
    }

    static SRequest WireRequest(const std::string& community, int pduType, const char* name,
                                EProtocol protocol = eSnmpV2c)
    {
        SRequest request;
        request.protocol = protocol;
        request.pduType = pduType;
        request.community = community;
        request.remote.Parse("udp:127.0.0.1:4000");
        request.maxMessage = 65507;
        Add(request, name);
        return request;
    }
    static void Add(SRequest& request, const char* name, const char* text = "x")
    {
        BObjectSyntax value;
        if (request.pduType == ePduSet)
            value.SetOctets(BString(text));
        request.bindings.Append(VLK::Test::MakeOid(name), value);
    }

    SConfiguration configuration;
    BAccess access;
    Saves saves;
    BRegions regions;
    BWatchingHandler handler{access, saves, regions};
    modules::SSnmpCounters counters;
    BDispatcher dispatcher;
    SEngineLoad load;
    SAgentTotals totals;
    BVerbs verbs;
    BSecurityParams console;
    BString context;
};

} // namespace VLK::host
