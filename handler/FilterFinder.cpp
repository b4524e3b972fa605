#include "handler/FilterFinder.h"

#include <cstring>
#include <new>

namespace VLK {

namespace {

// So many walks cost about as much as a picture.
constexpr unsigned kWalksBefore = 8;

constexpr std::uint64_t kSeed = 14695981039346656037u;

std::uint64_t Mix(std::uint64_t hash, std::uint64_t word) { return (hash ^ word) * 1099511628211u; }

// The upper bits of a word carry to few others: folded, they come down again.
std::uint64_t Fold(std::uint64_t hash)
{
    hash = (hash ^ (hash >> 32)) * 11400714819323198485u;
    return hash ^ (hash >> 32);
}

std::uint64_t HashOf(std::uint64_t seed, const unsigned char* bytes, unsigned length)
{
    std::uint64_t hash = Mix(seed, length);
    for (unsigned i = 0; i < length; ++i)
        hash = Mix(hash, bytes[i]);
    return Fold(hash);
}

std::uint64_t HashOf(const BString& name)
{
    return HashOf(kSeed, reinterpret_cast<const unsigned char*>(name.c_str()), name.length());
}

std::uint64_t HashOfShape(int view, const BFilterTable::Entry& row)
{
    return HashOf(Mix(Mix(kSeed, std::uint64_t(view)), row.subtree.Length()), row.mask.Data(),
                  row.mask.Length());
}

// Whether an arc of the subtree need not match (RFC 3415 section 4,
// vacmViewTreeFamilyMask).
bool IsOpen(const BOctetString& mask, unsigned arc)
{
    return arc / 8 < mask.Length() && (mask.Data()[arc / 8] & (0x80u >> (arc % 8))) == 0;
}

// Of the arcs that count for a shape, which the identifier is long enough for.
std::uint64_t HashOfArcs(int shape, const BFilterTable::Entry& sample, const BObjectIdentifier& oid)
{
    const unsigned length = sample.subtree.Length();
    std::uint64_t hash = Mix(kSeed, std::uint64_t(shape));
    for (unsigned i = 0; i < length; ++i) {
        if (!IsOpen(sample.mask, i))
            hash = Mix(hash, oid[i]);
    }
    return Fold(hash);
}

} // namespace

template <class Item>
bool HashChains<Item>::Reset(unsigned most)
{
    Clear();
    std::size_t heads = 1;
    while (heads < most)
        heads *= 2;
    m_items = new (std::nothrow) Item[most];
    m_heads = new (std::nothrow) int[heads];
    if (!m_items || !m_heads) {
        Clear();
        return false;
    }
    std::memset(m_heads, 0xFF, heads * sizeof *m_heads); // all -1
    m_mask = heads - 1;
    return true;
}

template <class Item>
void HashChains<Item>::Clear()
{
    delete[] m_items;
    delete[] m_heads;
    m_items = nullptr;
    m_heads = nullptr;
    m_count = 0;
}

template <class Item>
int HashChains<Item>::Add(const Item& item)
{
    int& head = m_heads[std::size_t(item.hash) & m_mask];
    m_items[m_count] = item;
    m_items[m_count].next = head;
    return head = m_count++;
}

void BFilterTable::Finder::SFound::Add(int position)
{
    unsigned at = count;
    if (count == kMost) {
        if (positions[kMost - 1] > position)
            return;
        at = kMost - 1;
    } else {
        ++count;
    }
    for (; at > 0 && positions[at - 1] < position; --at)
        positions[at] = positions[at - 1];
    positions[at] = position;
}

BFilterTable::Finder::~Finder() { delete[] m_lent; }

bool BFilterTable::Finder::IsReady(const BFilterTable& table)
{
    if (m_isFresh)
        return true;
    if (++m_walks <= kWalksBefore)
        return false;
    m_walks = 0;
    m_isFresh = TakePicture(table);
    return m_isFresh;
}

int BFilterTable::Finder::ViewOf(const BString& name) const
{
    const std::uint64_t hash = HashOf(name);
    int view = m_views.First(hash);
    while (view >= 0 && !(m_views[view].hash == hash && m_views[view].sample->viewName == name))
        view = m_views[view].next;
    return view;
}

int BFilterTable::Finder::ShapeOf(int view, const Entry& row) const
{
    const std::uint64_t hash = HashOfShape(view, row);
    for (int shape = m_shapes.First(hash); shape >= 0; shape = m_shapes[shape].next) {
        const SShape& other = m_shapes[shape];
        if (other.hash == hash && other.view == view &&
            other.sample->subtree.Length() == row.subtree.Length() &&
            other.sample->mask == row.mask)
            return shape;
    }
    return -1;
}

void BFilterTable::Finder::AddRow(const Entry& row, int position)
{
    int view = ViewOf(row.viewName);
    if (view < 0)
        view = m_views.Add({HashOf(row.viewName), -1, &row, -1});
    int shape = ShapeOf(view, row);
    if (shape < 0) {
        shape = m_shapes.Add({HashOfShape(view, row), -1, &row, view, m_views[view].firstShape});
        m_views[view].firstShape = shape;
    }
    m_rows.Add({HashOfArcs(shape, row, row.subtree), -1, position});
}

bool BFilterTable::Finder::TakePicture(const BFilterTable& table)
{
    const unsigned count = static_cast<unsigned>(table.End());
    delete[] m_lent;
    m_lent = new (std::nothrow) int[count];
    m_lentCount = 0;
    if (!m_lent || !m_views.Reset(count) || !m_shapes.Reset(count) || !m_rows.Reset(count))
        return false;
    for (int position = 0; position < table.End(); ++position) {
        const Entry& row = *table.RowOf(position);
        if (table.IsLent(position))
            m_lent[m_lentCount++] = position;
        else if (row.rowStatus == eRowActive)
            AddRow(row, position);
    }
    return true;
}

void BFilterTable::Finder::Find(const BFilterTable& table, const BString& viewName,
                                const BObjectIdentifier& oid, SFound& found) const
{
    const int view = ViewOf(viewName);
    for (int shape = view < 0 ? -1 : m_views[view].firstShape; shape >= 0;
         shape = m_shapes[shape].nextShape) {
        const Entry& sample = *m_shapes[shape].sample;
        if (sample.subtree.Length() > oid.Length())
            continue;
        const std::uint64_t hash = HashOfArcs(shape, sample, oid);
        for (int i = m_rows.First(hash); i >= 0; i = m_rows[i].next) {
            if (m_rows[i].hash == hash && table.Covers(m_rows[i].position, viewName, oid))
                found.Add(m_rows[i].position);
        }
    }
    for (unsigned i = 0; i < m_lentCount; ++i) {
        if (table.Covers(m_lent[i], viewName, oid))
            found.Add(m_lent[i]);
    }
}

} // namespace VLK
