#include "jet/checker.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

namespace quorvel::jet::testing {

namespace {

constexpr std::uint8_t kFreeMapPointerMask[] = {0xb5, 0x6f, 0x03, 0x62};

class Checker {
public:
    explicit Checker(Bytes file) : file_(file), pages_(static_cast<std::uint32_t>(file.size() / kPageSize)) {}

    std::vector<std::string> run(int* leaked)
    {
        if (file_.size() % kPageSize != 0) fault("the file does not end at a page boundary");
        claim(0, "header");
        claim(1, "global maps");
        std::uint32_t pointer = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            pointer |= static_cast<std::uint32_t>(file_[0x18 + i] ^ kFreeMapPointerMask[i]) << (8 * i);
        }
        const auto free = map(pointer, true);
        for (std::uint32_t table = 2; table <= 5; ++table)
            checkTable(table);
        for (const auto& id : userTables_)
            checkTable(id);
        checkAccounting(free, leaked);
        return faults_;
    }

private:
    void fault(const std::string& what) { faults_.push_back(what); }
    Bytes page(std::uint32_t number) const { return part(file_, std::size_t{number} * kPageSize, kPageSize); }

    void claim(std::uint32_t number, const std::string& by)
    {
        if (number >= pages_) return fault(by + " names page " + std::to_string(number) + " behind the end");
        const auto [place, fresh] = owners_.emplace(number, by);
        if (!fresh) fault("page " + std::to_string(number) + " belongs to " + place->second + " and " + by);
    }

    /// The bytes of each slot, deleted ones empty.
    std::vector<Bytes> slots(std::uint32_t number)
    {
        const auto bytes = page(number);
        const std::string name = "page " + std::to_string(number);
        if (get16(bytes, 0) != 0x0101) fault(name + " is no data page");
        std::vector<Bytes> rows;
        std::size_t end = kPageSize;
        const std::size_t count = get16(bytes, 0x0C);
        if (count > 255) fault(name + " has too many slots");
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint16_t slot = get16(bytes, 0x0E + 2 * i);
            const std::size_t begin = slot & 0x1FFF;
            if (begin > end || begin < 0x0E + 2 * count)
                fault(name + ": slot " + std::to_string(i) + " overlaps");
            rows.push_back((slot & 0xC000) != 0 ? Bytes() : part(bytes, begin, end - begin));
            end = begin;
        }
        if (get16(bytes, 2) != end - 0x0E - 2 * count) fault(name + ": its free bytes are wrong");
        return rows;
    }

    /// The pages of a map inside the file. Its bitmap pages are claimed.
    std::set<std::uint32_t> map(std::uint32_t pointer, bool beyondIsSet)
    {
        std::set<std::uint32_t> set;
        const auto rows = slots(pointer >> 8);
        const Bytes row = (pointer & 0xFF) < rows.size() ? rows[pointer & 0xFF] : Bytes();
        if (row.size() < 69) fault("a map is too short");
        const auto has = [](Bytes bits, std::uint32_t bit) {
            return (get8(bits, bit / 8) >> (bit % 8) & 1) != 0;
        };
        for (std::uint32_t number = 0; number < pages_; ++number) {
            bool in = beyondIsSet;
            if (get8(row, 0) == 0) {
                const std::uint32_t start = get32(row, 1);
                const bool covered = number >= start && (number - start) / 8 < row.size() - 5;
                if (covered) in = has(row.subspan(5), number - start);
            } else if (const std::uint32_t bitmap = get32(row, 1 + 4 * (number / 32736)); bitmap != 0) {
                if (bitmaps_.insert(bitmap).second) claim(bitmap, "a map");
                if (get32(page(bitmap), 0) != 0x0105) fault("a bitmap page is none");
                in = has(page(bitmap).subspan(4), number % 32736);
            }
            if (in) set.insert(number);
        }
        return set;
    }

    void checkIndex(std::uint32_t table, std::uint32_t root, std::uint32_t mapPointer, std::size_t rows,
                    std::uint32_t distinctKeys)
    {
        claim(root, "an index of table " + std::to_string(table));
        if (map(mapPointer, false) != std::set<std::uint32_t>{root}) fault("the map of an index is wrong");
        const auto bytes = page(root);
        if (get16(bytes, 0) != 0x0104 || get32(bytes, 4) != table) fault("an index leaf is none");
        std::size_t begin = 0x1E0;
        std::size_t entries = 0;
        Bytes before;
        std::set<ByteVector> keys;
        for (std::size_t bit = 1; bit <= kPageSize - 0x1E0; ++bit) {
            if ((bytes[0x1B + bit / 8] >> (bit % 8) & 1) == 0) continue;
            const auto entry = part(bytes, begin, 0x1E0 + bit - begin);
            if (!std::lexicographical_compare(before.begin(), before.end(), entry.begin(), entry.end())) {
                fault("an index is out of order");
            }
            before = entry;
            keys.emplace(entry.begin(), entry.end() - 4); // without its row pointer
            begin = 0x1E0 + bit;
            ++entries;
        }
        if (get16(bytes, 2) != kPageSize - begin) fault("the free bytes of an index leaf are wrong");
        if (keys.size() != distinctKeys)
            fault("an index of table " + std::to_string(table) + " miscounts its keys");
        if (entries != rows) fault("an index of table " + std::to_string(table) + " misses rows");
    }

    void checkTable(std::uint32_t table)
    {
        const std::string name = "table " + std::to_string(table);
        claim(table, name);
        const auto bytes = page(table);
        if (get16(bytes, 0) != 0x0102) fault(name + " has no definition");
        const std::size_t length = get32(bytes, 8);
        if (get16(bytes, 2) != kPageSize - length - 8)
            fault(name + ": the free bytes of its definition are wrong");
        if (get16(bytes, length - 2) != 0xFFFF) fault(name + ": its definition does not end");
        if (mapPages_.insert(get32(bytes, 0x37) >> 8).second) claim(get32(bytes, 0x37) >> 8, "maps");
        const auto owned = map(get32(bytes, 0x37), false);
        std::size_t rows = 0;
        for (const std::uint32_t number : owned) {
            claim(number, name);
            if (get32(page(number), 4) != table) fault(name + " owns a page of another");
            for (const auto row : slots(number)) {
                if (row.empty()) continue;
                ++rows;
                if (table == 2) noteCatalogRow(row);
            }
        }
        if (get32(bytes, 0x10) != rows) {
            fault(name + " counts " + std::to_string(get32(bytes, 0x10)) + " rows, has " +
                  std::to_string(rows));
        }
        for (const std::uint32_t number : map(get32(bytes, 0x3B), false)) {
            if (!owned.contains(number)) fault(name + ": a page with free space is not its own");
        }
        const std::size_t indexes = get32(bytes, 0x33);
        std::size_t at = 0x3F + indexes * 12 + get16(bytes, 0x2D) * std::size_t{25};
        for (std::size_t i = 0; i < get16(bytes, 0x2D); ++i)
            at += 2U + get16(bytes, at);
        for (std::size_t i = 0; i < indexes; ++i, at += 52) {
            checkIndex(table, get32(bytes, at + 38), get32(bytes, at + 34), rows,
                       get32(bytes, 0x3F + 12 * i + 4));
        }
    }

    void noteCatalogRow(Bytes row)
    {
        if (get16(row, 2 + 8) == 1 && get32(row, 2) > 5) userTables_.push_back(get32(row, 2));
    }

    void checkAccounting(const std::set<std::uint32_t>& free, int* leaked)
    {
        for (std::uint32_t number = 0; number < pages_; ++number) {
            const auto owner = owners_.find(number);
            if (owner != owners_.end() && free.contains(number)) {
                fault("page " + std::to_string(number) + " of " + owner->second + " is marked free");
            }
            if (owner != owners_.end() || free.contains(number)) continue;
            if (leaked == nullptr)
                fault("page " + std::to_string(number) + " belongs to nobody and is not free");
            if (leaked != nullptr) ++*leaked;
        }
    }

    Bytes file_;
    std::uint32_t pages_;
    std::map<std::uint32_t, std::string> owners_;
    std::set<std::uint32_t> mapPages_;
    std::set<std::uint32_t> bitmaps_;
    std::vector<std::uint32_t> userTables_;
    std::vector<std::string> faults_;
};

} // namespace

std::vector<std::string> faultsOf(Bytes file, int* leaked) { return Checker(file).run(leaked); }

std::vector<std::string> faultsOfFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
    return faultsOf(bytes);
}

} // namespace quorvel::jet::testing
