// Configurations of any bytes: the reader makes one, or says in lines that can be
// read what is wrong; what it makes can be put to work.
#include "fuzz/Fuzz.h"
#include "host/access/Access.h"
#include "host/config/ConfigFile.h"

#include <algorithm>

namespace VLK::Fuzz {
namespace {

constexpr const char* kFile = "f";

void CheckLines(const std::vector<std::string>& lines)
{
    Require(!lines.empty(), "a refusal without a reason");
    for (const std::string& line : lines) {
        Require(line.rfind(std::string(kFile) + ":", 0) == 0, "a line without its place");
        const bool isReadable = std::all_of(line.begin(), line.end(), [](char c) {
            return static_cast<unsigned char>(c) >= 32 && c != 127;
        });
        if (!isReadable)
            Differ("a line with control characters: " + line);
    }
}

void CheckAccess(const host::SConfiguration& configuration)
{
    host::BAccess access(configuration, nullptr);
    BSecurityParams nobody;
    const BObjectIdentifier name(BString("1.3.6.1.2.1.1.1.0"));
    const host::SVacmDecision decision = host::BRightsOfRequest(access)->vacm.Decide(
        nobody, host::eViewWrite, BString("no such context"), name);
    Require(decision.answer != host::eVacmAllowed, "rights of a context that is not there");
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    using namespace VLK;
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find("PassphraseFile") != std::string::npos)
        return 0; // would read any file of this machine
    try {
        Fuzz::CheckAccess(host::ReadConfigText(text, Fuzz::kFile, true));
    } catch (const host::BConfigError& error) {
        Fuzz::CheckLines(error.Lines());
    }
    return 0;
}
