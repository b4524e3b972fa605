// The users of SNMPv3 in a configuration file, and their passphrases, which no message
// shows.
#include "host/Descriptor.h"
#include "host/SystemError.h"
#include "host/config/ConfigReader.h"
#include "host/config/PrivateFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace VLK::host {

namespace {

constexpr size_t kLeastPassphrase = 8; // RFC 3414 section 11.2
constexpr size_t kMostPassphrase = 255;

// As the wire library and its tools call them.
constexpr const char* kAuths[] = {"SHA", "SHA-224", "SHA-256", "SHA-384", "SHA-512"};
constexpr const char* kPrivs[] = {"AES", "AES-192", "AES-256"};

template <size_t count>
std::string Protocol(BConfigTable& table, const char* key, const char* const (&known)[count])
{
    std::optional<SText> text = table.Text(key);
    if (!text)
        return "";
    std::string all;
    for (const char* name : known) {
        if (text->text == name)
            return name;
        all += (all.empty() ? "" : ", ") + std::string(name);
    }
    table.Refuse(*text, "is none of " + all);
    return "";
}

std::string CheckPassphrase(const std::string& text)
{
    if (text.size() < kLeastPassphrase)
        return "has fewer than 8 characters";
    if (text.size() > kMostPassphrase)
        return "has more than 255 octets";
    bool hasControls = std::any_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == 0x7f;
    });
    return hasControls ? "has control characters" : "";
}

// The first line of a file that is its owner's alone; why not, when there is none.
std::string ReadFirstLine(const std::string& path, std::string& line)
{
    if (path.compare(0, 1, "/") != 0)
        return "does not begin with '/'";
    BDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen())
        return "cannot be read: " + SystemError(errno);
    if (!IsPrivate(file.Get()))
        return "may be read or written by others: chmod 600 it";
    char text[kMostPassphrase + 2];
    ssize_t count = read(file.Get(), text, sizeof text);
    if (count < 0)
        return "cannot be read: " + SystemError(errno);
    line.assign(text, std::find(text, text + count, '\n'));
    return "";
}

} // namespace

std::string BConfigReader::ReadPassphrase(BConfigTable& table, const char* protocol,
                                          const char* key, const char* fileKey)
{
    const std::optional<SText> text = table.Secret(key);
    const std::optional<SText> file = table.Text(fileKey);
    if (!table.Has(protocol)) {
        for (const char* given : {key, fileKey}) {
            if (table.Has(given))
                m_problems.Add(table.Place(),
                               std::string(given) + " is for nothing without " + protocol);
        }
        return "";
    }
    if (!table.Has(key) && !table.Has(fileKey))
        table.Miss(key, std::string(" and no ") + Quoted(fileKey));
    if (text && file)
        Refuse(*file, std::string("stands beside ") + key);
    std::string passphrase = text ? text->text : "";
    std::string why;
    if (text && !m_isPrivate)
        why = "stands in a file that others may read or write: chmod 600 it";
    else if (text || (file && (why = ReadFirstLine(file->text, passphrase)).empty()))
        why = CheckPassphrase(passphrase);
    if (!why.empty() && text) // not to be shown
        m_problems.Add(text->place, std::string(key) + " " + why);
    else if (!why.empty())
        Refuse(*file, why);
    return passphrase;
}

// Rights of its own, or those of the group it is in.
void BConfigReader::ReadUser(BConfigTable& table)
{
    SUser user;
    std::optional<SText> name = Name(table, "name", true);
    user.auth = Protocol(table, "auth", kAuths);
    user.authPassphrase = ReadPassphrase(table, "auth", "authPassphrase", "authPassphraseFile");
    user.priv = Protocol(table, "priv", kPrivs);
    user.privPassphrase = ReadPassphrase(table, "priv", "privPassphrase", "privPassphraseFile");
    if (table.Has("priv") && !table.Has("auth"))
        table.Refuse("priv", "is not without auth");
    std::string views[3] = {View(table, "read"), View(table, "write"), ""};
    views[eViewNotify] = table.Has("notify") ? View(table, "notify") : views[eViewRead];
    if (!name || !Define(m_users, "user", *name))
        return;
    user.name = name->text;
    if (table.Has("read") || table.Has("write") || table.Has("notify")) {
        Claim(eModelUsm, *name, user.name);
        AddUser(m_made, user, views);
    } else if (!m_members.count({eModelUsm, user.name})) {
        Refuse(*name, "has no rights: make it a member of a group with USM, or give the user "
                      "read, write or notify");
    } else {
        m_made.users.push_back(user);
    }
}

} // namespace VLK::host
