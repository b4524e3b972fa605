// A non-volatile store in memory that keeps an account of its calls. What has
// field 0 stands in `strings` and `numbers`, what has another in `records`.
#pragma once

#include <vkmibh/system.h>

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace VLK {
namespace Test {

class FakeStore : public INonVolatile {
public:
    // The fields of one record by their numbers, each as it was written: "text:all",
    // "octets:...", "oid:1.3", "number:1 active" with its label.
    struct Record {
        std::string key;
        std::map<int, std::string> fields;
        bool operator==(const Record& other) const
        {
            return key == other.key && fields == other.fields;
        }
    };
    using Records = std::vector<Record>;

    int GetStringAt(const char* section, int position, BString& value, int field) override
    {
        std::string text;
        if (!ReadField("GetStringAt", section, position, field, "text:", text))
            return 1;
        value = BString(text.data(), static_cast<unsigned>(text.size()));
        return value.length() == text.size() ? 0 : 1;
    }
    int GetString(const char* section, const char* key, BString& value, int field) override
    {
        Note("GetString", section, key, field);
        const auto found = strings.find(Path(section, key));
        if (found == strings.end())
            return 1;
        value = BString(found->second.data(), static_cast<unsigned>(found->second.size()));
        return 0;
    }
    int SetString(const char* section, const char* key, const BString& value, int field,
                  int flag) override
    {
        Note("SetString", section, key, field);
        flagsUsed |= flag;
        const std::string text(value.c_str(), value.length());
        if (field == 0)
            strings[Path(section, key)] = text;
        else
            FieldOf(section, key, field) = "text:" + text;
        return writeResult;
    }
    int GetOctetsAt(const char* section, int position, BOctetString& value, int field) override
    {
        std::string bytes;
        if (!ReadField("GetOctetsAt", section, position, field, "octets:", bytes))
            return 1;
        value.Clear();
        return bytes.empty() || value.Assign(static_cast<unsigned>(bytes.size()),
                                             reinterpret_cast<const unsigned char*>(bytes.data()))
                   ? 0
                   : 1;
    }
    int SetOctets(const char* section, const char* key, const BOctetString& value, int field,
                  int flag) override
    {
        Note("SetOctets", section, key, field);
        flagsUsed |= flag;
        std::string& written = FieldOf(section, key, field) = "octets:";
        for (unsigned i = 0; i < value.Length(); ++i)
            written += static_cast<char>(value[i]);
        return writeResult;
    }
    int GetOidAt(const char* section, int position, BObjectIdentifier& value, int field) override
    {
        std::string dotted;
        if (!ReadField("GetOidAt", section, position, field, "oid:", dotted))
            return 1;
        value = BObjectIdentifier(BString(dotted.c_str()));
        return value.Length() != 0 || dotted.empty() ? 0 : 1;
    }
    int SetOid(const char* section, const char* key, const BObjectIdentifier& value, int field,
               int flag) override
    {
        Note("SetOid", section, key, field);
        flagsUsed |= flag;
        FieldOf(section, key, field) = std::string("oid:") + value.ToString().c_str();
        return writeResult;
    }
    int GetIntAt(const char* section, int position, int& value, int field) override
    {
        std::string number;
        if (!ReadField("GetIntAt", section, position, field, "number:", number))
            return 1;
        value = std::stoi(number);
        return 0;
    }
    int GetInt(const char* section, const char* key, int& value, int field) override
    {
        Note("GetInt", section, key, field);
        const auto found = numbers.find(Path(section, key));
        if (found == numbers.end())
            return 1;
        value = found->second;
        return 0;
    }
    int SetInt(const char* section, const char* key, int value, const char* label, int field,
               int flag) override
    {
        Note(label ? "SetInt with a label" : "SetInt", section, key, field);
        flagsUsed |= flag;
        if (field == 0)
            numbers[Path(section, key)] = value;
        else
            FieldOf(section, key, field) =
                "number:" + std::to_string(value) + (label ? std::string(" ") + label : "");
        return writeResult;
    }
    void OpenSection(const char* section) override
    {
        Note(std::string("OpenSection ") + section);
        records[section].clear();
    }
    int GetRecordCount(const char* section) override
    {
        Note(std::string("GetRecordCount ") + section);
        return static_cast<int>(records[section].size()) + recordsPromised;
    }
    void RequestUpdate(INVCallback* callback) override
    {
        ++updatesRequested;
        lastCallback = callback;
        if (throwOnUpdate)
            throw std::runtime_error("store");
        if (saveAtOnce)
            callback->Update();
    }

    static std::string Path(const std::string& section, const std::string& key)
    {
        return section + "/" + key;
    }

    std::map<std::string, std::string> strings;
    std::map<std::string, int> numbers;
    std::map<std::string, Records> records; // by section
    int recordsPromised = 0;                // beside those that are there
    std::vector<std::string> calls;
    std::string throwOn; // a call, as it stands in `calls`
    int flagsUsed = 0;
    int writeResult = 0;
    int updatesRequested = 0;
    INVCallback* lastCallback = nullptr;
    bool throwOnUpdate = false;
    bool throwOnRead = false;
    bool saveAtOnce = false;

private:
    void Note(const std::string& call)
    {
        calls.push_back(call);
        if (throwOnRead || call == throwOn)
            throw std::runtime_error("store");
    }
    void Note(const char* operation, const char* section, const std::string& key, int field)
    {
        Note(std::string(operation) + " " + section + " " + key + " " + std::to_string(field));
    }

    std::string& FieldOf(const char* section, const char* key, int field)
    {
        Records& all = records[section];
        for (Record& record : all) {
            if (record.key == key)
                return record.fields[field];
        }
        all.push_back(Record{key, {}});
        return all.back().fields[field];
    }

    // Gives what a field holds after its kind.
    bool ReadField(const char* operation, const char* section, int position, int field,
                   const std::string& kind, std::string& rest)
    {
        Note(operation, section, std::to_string(position), field);
        const Records& all = records[section];
        if (position < 0 || static_cast<std::size_t>(position) >= all.size())
            return false;
        const auto& fields = all[static_cast<std::size_t>(position)].fields;
        const auto found = fields.find(field);
        if (found == fields.end() || found->second.compare(0, kind.size(), kind) != 0)
            return false;
        rest = found->second.substr(kind.size());
        return true;
    }
};

} // namespace Test
} // namespace VLK
