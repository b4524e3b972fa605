// Drives a sorted map of the library side by side with std::map and a plain
// scan from the first item, over keys made from small numbers.
#pragma once

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace VLKTest {

// The answers of the plain scan.
template <class Key>
int ScanFind(const std::vector<Key>& keys, const Key& key)
{
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!(keys[i] < key) && !(key < keys[i]))
            return static_cast<int>(i);
    }
    return -1;
}

template <class Key>
int ScanNext(const std::vector<Key>& keys, const Key& key)
{
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (key < keys[i])
            return static_cast<int>(i);
    }
    return -1;
}

// `make(n)` is the nth of `range` keys, in no particular order.
template <class Map, class Key, class Make>
void CompareWithScan(Make make, unsigned range, unsigned rounds, unsigned seed)
{
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<char> data(range);
    Map map;
    std::map<Key, void*> model;
    for (unsigned round = 0; round < rounds; ++round) {
        const unsigned n = random() % range;
        const Key key = make(n);
        const auto found = model.find(key);
        if (random() % 3 == 0) {
            void* expected = found == model.end() ? nullptr : found->second;
            ASSERT_EQ(map.Remove(key), expected);
            model.erase(key);
        } else {
            ASSERT_EQ(map.Insert(key, &data[n]), found == model.end());
            model.emplace(key, &data[n]);
        }
        ASSERT_EQ(map.Count(), model.size());
        std::vector<Key> keys;
        for (const auto& item : model) {
            const int index = static_cast<int>(keys.size());
            ASSERT_EQ(map.KeyAt(index), item.first);
            ASSERT_EQ(map.DataAt(index), item.second);
            keys.push_back(item.first);
        }
        for (unsigned i = 0; i < range; ++i) {
            ASSERT_EQ(map.Find(make(i)), ScanFind(keys, make(i)));
            ASSERT_EQ(map.Next(make(i)), ScanNext(keys, make(i)));
        }
    }
}

} // namespace VLKTest
