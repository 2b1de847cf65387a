#include "crash/sunken_disk.h"

#include <algorithm>

namespace quorvel::test {

namespace {

constexpr std::size_t kSectorBytes = 512;
constexpr std::size_t kMostWhole = 600;  // choices up to which each is tried
constexpr std::size_t kMostSingle = 150; // items that are tried one by one
constexpr int kByChance = 150;

std::string folderOf(const std::string& name)
{
    const auto slash = name.rfind('/');
    return slash == std::string::npos ? std::string() : name.substr(0, slash);
}

} // namespace

SunkenDisk::SunkenDisk(const Files& files, const std::map<std::uint64_t, std::string>& numbers,
                       std::string folder)
    : folder_(std::move(folder))
{
    for (const auto& [number, name] : numbers) {
        byNumber_[number] = inodes_.size();
        durable_[name] = inodes_.size();
        inodes_.push_back({files.at(name), files.at(name), {}, {}});
    }
    now_ = durable_;
}

std::string SunkenDisk::nameOf(const std::string& path) const
{
    return path.size() > folder_.size() ? path.substr(folder_.size() + 1) : std::string();
}

void SunkenDisk::apply(const Step& step)
{
    const auto name = nameOf(step.first);
    const auto at = static_cast<std::size_t>(step.at);
    switch (step.deed) {
    case Deed::Made:
        byNumber_[step.file] = inodes_.size();
        changeName({"", name, inodes_.size()});
        inodes_.emplace_back();
        break;
    case Deed::Written: {
        auto& inode = inodes_[byNumber_.at(step.file)];
        inode.change(at, step.first, std::max(inode.now.size(), at + step.first.size()));
        break;
    }
    case Deed::Cut: {
        auto& inode = inodes_[byNumber_.at(step.file)];
        const auto gone = inode.now.size() > at ? inode.now.size() - at : 0;
        inode.change(at, std::string(gone, '\0'), at);
        break;
    }
    case Deed::Flushed:
        inodes_[byNumber_.at(step.file)].flush();
        break;
    case Deed::FolderFlushed:
        flushFolder(name);
        break;
    case Deed::Renamed:
        changeName({name, nameOf(step.second), now_.at(name)});
        break;
    case Deed::Linked:
        changeName({"", nameOf(step.second), now_.at(name)});
        break;
    case Deed::Removed:
        if (now_.contains(name)) changeName({name, "", now_.at(name)}); // else a folder
        break;
    case Deed::Said:
        break;
    }
}

/// Puts bytes at a place of a file, which has this size afterwards.
void SunkenDisk::Inode::change(std::size_t at, const std::string& bytes, std::size_t size)
{
    const auto end = at + bytes.size();
    const auto room = std::max({now.size(), end, size});
    now.resize(room);
    auto before = now;
    now.replace(at, bytes.size(), bytes);
    for (auto begin = at / kSectorBytes * kSectorBytes; begin < end; begin += kSectorBytes) {
        const auto content = now.substr(begin, kSectorBytes);
        if (content == before.substr(begin, kSectorBytes)) continue;
        auto& sector = sectors[begin];
        sector.begin = begin;
        sector.contents.push_back(content);
    }
    now.resize(size);
    if (sizes.empty() ? size != durable.size() : size != sizes.back()) sizes.push_back(size);
}

void SunkenDisk::Inode::flush()
{
    durable = now;
    sectors.clear();
    sizes.clear();
}

std::string SunkenDisk::Inode::chosen(std::optional<std::size_t> size,
                                      const std::map<std::size_t, std::size_t>& versions) const
{
    auto content = durable;
    const auto wanted = size.value_or(content.size());
    content.resize(wanted);
    for (const auto& [begin, version] : versions) {
        if (begin >= wanted) continue;
        const auto& sector = sectors.at(begin).contents.at(version);
        content.replace(begin, std::min(sector.size(), wanted - begin), sector, 0, wanted - begin);
    }
    return content;
}

void SunkenDisk::NameChange::applyTo(Names& names) const
{
    const auto old = names.find(gone);
    if (old != names.end() && old->second == inode) names.erase(old);
    if (!name.empty()) names[name] = inode;
}

void SunkenDisk::changeName(const NameChange& change)
{
    change.applyTo(now_);
    pending_.push_back(change);
}

void SunkenDisk::flushFolder(const std::string& folder)
{
    std::erase_if(pending_, [&](const NameChange& change) {
        if (folderOf(change.name.empty() ? change.gone : change.name) != folder) return false;
        change.applyTo(durable_);
        return true;
    });
}

Files SunkenDisk::now() const
{
    Files files;
    for (const auto& [name, inode] : now_)
        files[name] = inodes_[inode].now;
    return files;
}

std::vector<SunkenDisk::Item> SunkenDisk::items() const
{
    std::vector<Item> items;
    std::vector<bool> named(inodes_.size());
    for (const auto& [name, inode] : durable_)
        named[inode] = true;
    for (std::size_t change = 0; change < pending_.size(); ++change) {
        items.push_back({Item::Kind::Name, change, 0, 2});
        named[pending_[change].inode] = true;
    }
    for (std::size_t index = 0; index < inodes_.size(); ++index) {
        if (!named[index]) continue;
        const auto& inode = inodes_[index];
        if (!inode.sizes.empty()) items.push_back({Item::Kind::Size, index, 0, 1 + inode.sizes.size()});
        for (const auto& [begin, sector] : inode.sectors)
            items.push_back({Item::Kind::Sector, index, begin, 1 + sector.contents.size()});
    }
    return items;
}

Files SunkenDisk::build(const std::vector<Item>& items, const Choice& choice) const
{
    auto names = durable_;
    std::map<std::size_t, std::optional<std::size_t>> sizes;
    std::map<std::size_t, std::map<std::size_t, std::size_t>> versions;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (choice[i] == 0) continue;
        const auto& item = items[i];
        if (item.kind == Item::Kind::Name) pending_[item.index].applyTo(names);
        if (item.kind == Item::Kind::Size) sizes[item.index] = inodes_[item.index].sizes[choice[i] - 1];
        if (item.kind == Item::Kind::Sector) versions[item.index][item.begin] = choice[i] - 1;
    }
    Files files;
    for (const auto& [name, inode] : names)
        files[name] = inodes_[inode].chosen(sizes[inode], versions[inode]);
    return files;
}

void SunkenDisk::forEachCut(std::mt19937& chance, const std::function<void(const Files&)>& tell) const
{
    const auto all = items();
    std::size_t choices = 1;
    for (const auto& item : all)
        choices = choices > kMostWhole ? choices : choices * item.versions;
    if (choices <= kMostWhole) {
        for (std::size_t number = 0; number < choices; ++number) {
            Choice choice;
            auto rest = number;
            for (const auto& item : all) {
                choice.push_back(rest % item.versions);
                rest /= item.versions;
            }
            tell(build(all, choice));
        }
        return;
    }
    Choice none(all.size(), 0);
    Choice whole;
    for (const auto& item : all)
        whole.push_back(item.versions - 1);
    tell(build(all, none));
    tell(build(all, whole));
    const auto step = 1 + all.size() / kMostSingle;
    for (std::size_t i = 0; i < all.size(); i += step) {
        for (auto choice : {none, whole}) {
            choice[i] = choice[i] == 0 ? all[i].versions - 1 : 0;
            tell(build(all, choice));
        }
    }
    for (int i = 0; i < kByChance; ++i) {
        Choice choice;
        // names come or stay out as often as all sectors together
        for (const auto& item : all)
            choice.push_back(chance() % item.versions);
        tell(build(all, choice));
    }
}

} // namespace quorvel::test
