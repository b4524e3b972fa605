// A non-volatile store in memory that keeps an account of its calls.
#pragma once

#include <vkmibh/system.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace VLK {
namespace Test {

class FakeStore : public INonVolatile {
public:
    int GetStringAt(const char*, int, BString&, int) override { return 1; }
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
        strings[Path(section, key)] = std::string(value.c_str(), value.length());
        return writeResult;
    }
    int GetOctetsAt(const char*, int, BOctetString&, int) override { return 1; }
    int SetOctets(const char*, const char*, const BOctetString&, int, int) override { return 1; }
    int GetOidAt(const char*, int, BObjectIdentifier&, int) override { return 1; }
    int SetOid(const char*, const char*, const BObjectIdentifier&, int, int) override { return 1; }
    int GetIntAt(const char*, int, int&, int) override { return 1; }
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
        numbers[Path(section, key)] = value;
        return writeResult;
    }
    void OpenSection(const char* section) override
    {
        calls.push_back(std::string("OpenSection ") + section);
    }
    int GetRecordCount(const char*) override { return 0; }
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
    std::vector<std::string> calls;
    int flagsUsed = 0;
    int writeResult = 0;
    int updatesRequested = 0;
    INVCallback* lastCallback = nullptr;
    bool throwOnUpdate = false;
    bool throwOnRead = false;
    bool saveAtOnce = false;

private:
    void Note(const char* operation, const char* section, const char* key, int field)
    {
        calls.push_back(std::string(operation) + " " + section + " " + key + " " +
                        std::to_string(field));
        if (throwOnRead)
            throw std::runtime_error("store");
    }
};

} // namespace Test
} // namespace VLK
