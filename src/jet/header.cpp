#include "jet/header.h"

#include "files/name.h"
#include "jet/text_coding.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <string_view>

namespace quorvel::jet {

namespace {

constexpr std::size_t kName = 0x04;
constexpr std::size_t kVersion = 0x14;
constexpr std::size_t kMaskBegin = 0x18;
constexpr std::size_t kReleasedMap = 0x1C;
constexpr std::size_t kSystemTables = 0x20;
constexpr std::size_t kCodePage = 0x3C;
constexpr std::size_t kEncodingKey = 0x3E;
constexpr std::size_t kPassword = 0x42;
constexpr std::size_t kBuild = 0x6A;
constexpr std::size_t kSortOrder = 0x6E;
constexpr std::size_t kStamp = 0x72;
constexpr std::size_t kAfterMask = 0x98;
constexpr std::size_t kCommitWords = 0xE00;

constexpr std::uint8_t kMask[] = {
    0xb5, 0x6f, 0x03, 0x62, 0x61, 0x08, 0xc2, 0x55, 0xeb, 0xa9, 0x67, 0x72, 0x43, 0x3f, 0x00, 0x9c, //
    0x7a, 0x9f, 0x90, 0xff, 0x80, 0x9a, 0x31, 0xc5, 0x79, 0xba, 0xed, 0x30, 0xbc, 0xdf, 0xcc, 0x9d, //
    0x63, 0xd9, 0xe4, 0xc3, 0x7b, 0x42, 0xfb, 0x8a, 0xbc, 0x4e, 0x86, 0xfb, 0xec, 0x37, 0x5d, 0x44, //
    0x9c, 0xfa, 0xc6, 0x5e, 0x28, 0xe6, 0x13, 0xb6, 0x8a, 0x60, 0x54, 0x94, 0x7b, 0x36, 0xf5, 0x72, //
    0xdf, 0xb1, 0x77, 0xf4, 0x13, 0x43, 0xcf, 0xaf, 0xb1, 0x33, 0x34, 0x61, 0x79, 0x5b, 0x92, 0xb5, //
    0x7c, 0x2a, 0x05, 0xf1, 0x7c, 0x99, 0x01, 0x1b, 0x98, 0xfd, 0x12, 0x4f, 0x4a, 0x94, 0x6c, 0x3e, //
    0x60, 0x26, 0x5f, 0x95, 0xf8, 0xd0, 0x89, 0x24, 0x85, 0x67, 0xc6, 0x1f, 0x27, 0x44, 0xd2, 0xee, //
    0xcf, 0x65, 0xed, 0xff, 0x07, 0xc7, 0x46, 0xa1, 0x78, 0x16, 0x0c, 0xed, 0xe9, 0x2d, 0x62, 0xd4,
};
constexpr std::size_t kMaskBytesJet3 = 126;

constexpr std::size_t kMarkBytes = 20;
constexpr std::uint8_t kSignature[] = {0x00, 0x01, 0x00, 0x00};
constexpr std::string_view kJetName("Standard Jet DB\0", 16);
constexpr std::string_view kAceName("Standard ACE DB\0", 16);
constexpr std::string_view kMoneyName("MSISAM Database\0", 16);

bool beginsWith(Bytes bytes, std::size_t at, std::string_view text)
{
    return bytes.size() >= at + text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

/// The password area holds the days of the creation stamp, over and over, when there is no password.
std::uint32_t stampDays(Bytes header)
{
    const double stamp = doubleOf(get64(header, kStamp));
    if (!(std::fabs(stamp) < 2147483648.0)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(stamp));
}

bool hasPassword(Bytes header, const Layout& layout)
{
    const bool jet4 = layout.version == 4;
    const std::uint32_t days = jet4 ? stampDays(header) : 0;
    for (std::size_t i = 0; i < (jet4 ? 40U : 20U); i += 4) {
        if (get32(header, kPassword + i) != days) return true;
    }
    return false;
}

/// Whether a file begins as databases do; one that ends within the mark is measured by what it has of it.
bool hasMark(Bytes start)
{
    ByteVector mark(std::begin(kSignature), std::end(kSignature));
    mark.insert(mark.end(), kJetName.begin(), kJetName.end());
    const auto found = part(start, 0, kMarkBytes);
    return std::equal(found.begin(), found.end(), mark.begin());
}

Status checkIsDatabase(Bytes start, std::uint64_t fileSize)
{
    if (fileSize == 0) return Failure{"is empty. Choose another file."};
    if (beginsWith(start, kName, kAceName)) {
        return Failure{
            "was made by Access 2007 or later. Save it there as \"Access 2002-2003 database\" (.mdb)."};
    }
    if (beginsWith(start, kName, kMoneyName)) {
        return Failure{"is a file of a money program, not an Access database. Choose another file."};
    }
    if (!hasMark(start)) {
        return Failure{"is not an Access database. Choose another file."};
    }
    return {};
}

} // namespace

Status expectLeftOver(File& file, const std::filesystem::path& path)
{
    const auto size = file.size();
    if (!size) return size.failure();
    ByteVector start(std::min<std::uint64_t>(*size, kMarkBytes));
    if (auto got = file.readPage(0, start); !got) return got.failure();
    if (hasMark(start)) return {};
    return Failure{"could not be created: another file is named \"" + files::inWords(path.filename()) +
                   "\". Rename that file."};
}

void maskHeader(MutableBytes page, const Layout& layout)
{
    const std::size_t count = layout.version == 4 ? sizeof kMask : kMaskBytesJet3;
    for (std::size_t i = 0; i < count && kMaskBegin + i < page.size(); ++i) {
        page[kMaskBegin + i] ^= kMask[i];
    }
}

Result<Header> readHeader(Bytes start, std::uint64_t fileSize)
{
    if (auto known = checkIsDatabase(start, fileSize); !known) return known.failure();
    const std::uint32_t version = get32(start, kVersion);
    if (start.size() >= kVersion + 4 && version > 1) {
        return Failure{
            "was made by a later version of Access. Save it there as \"Access 2002-2003 database\"."};
    }
    Header header;
    header.layout = version == 0 ? &kJet3 : &kJet4;
    if (start.size() < kHeaderBytes || fileSize / header.layout->pageSize < 3) {
        return Failure{"is cut off: it ends before its tables begin. Copy it again."};
    }
    ByteVector clear(start.begin(), start.end());
    maskHeader(clear, *header.layout);
    if (get32(clear, kEncodingKey) != 0) {
        return Failure{"is encoded. Decode it in Access and try again."};
    }
    if (hasPassword(clear, *header.layout)) {
        return Failure{"has a database password. Remove the password in Access and try again."};
    }
    header.freeMap = get32(clear, kMaskBegin);
    header.codePage = get16(clear, kCodePage);
    return header;
}

Page newHeader(Date stamp)
{
    Page page{};
    putBytes(page, 0, kSignature);
    std::copy(kJetName.begin(), kJetName.end(), page.begin() + kName);
    put32(page, kVersion, 1);
    put32(page, kMaskBegin, rowPointer(1, 0));
    put32(page, kReleasedMap, rowPointer(1, 1));
    for (std::uint32_t i = 0; i < 4; ++i) {
        put32(page, kSystemTables + std::size_t{4} * i, 2 + i);
    }
    put16(page, kCodePage, 1252);
    put32(page, kBuild, 0x261C);
    put32(page, kSortOrder, kGeneralSortOrder);
    put64(page, kStamp, std::bit_cast<std::uint64_t>(stamp.serial));
    for (std::size_t i = 0; i < 40; i += 4) {
        put32(page, kPassword + i, stampDays(page));
    }
    put32(page, kAfterMask, 0x654);
    putBytes(page, kAfterMask + 4, Bytes(reinterpret_cast<const std::uint8_t*>("4.0"), 4));
    put16(page, kCommitWords, 0x0101);
    for (std::size_t at = kCommitWords + 2; at < kPageSize; at += 2) {
        put16(page, at, 0x0100);
    }
    maskHeader(page, kJet4);
    return page;
}

ByteVector rc4Stream(std::uint32_t key, std::size_t count)
{
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < 256; ++i) {
        j = static_cast<std::uint8_t>(j + state[i] + (key >> (8 * (i % 4)) & 0xFF));
        std::swap(state[i], state[j]);
    }
    ByteVector stream;
    std::uint8_t i = 0;
    j = 0;
    while (stream.size() < count) {
        ++i;
        j = static_cast<std::uint8_t>(j + state[i]);
        std::swap(state[i], state[j]);
        stream.push_back(state[static_cast<std::uint8_t>(state[i] + state[j])]);
    }
    return stream;
}

std::uint32_t securityKey(Bytes header)
{
    std::uint32_t key = get32(header, kStamp);
    for (std::size_t i = 20; i < 28; ++i) {
        key ^= static_cast<std::uint32_t>(get8(header, kPassword + 2 * i)) << (i % 24);
    }
    return key;
}

SecurityIds securityIds(Date stamp)
{
    Page header = newHeader(stamp);
    maskHeader(header, kJet4);
    const auto stream = rc4Stream(securityKey(header), 2);
    const auto stored = [&stream](std::uint8_t first, std::uint8_t second) {
        return std::array<std::uint8_t, 2>{static_cast<std::uint8_t>(first ^ stream[0]),
                                           static_cast<std::uint8_t>(second ^ stream[1])};
    };
    return {stored(3, 1), stored(2, 1), stored(2, 3), stored(2, 4)};
}

} // namespace quorvel::jet
