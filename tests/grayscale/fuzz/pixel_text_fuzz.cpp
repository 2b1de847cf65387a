#include "grayscale/readingfile.h"
#include "support/fresh_folder.h"
#include "support/fuzz_input.h"

#include <algorithm>
#include <cmath>
#include <fstream>

/// Takes any bytes for a text file of pixels. What is read must be brightnesses, and be saved so that it is read as the same.
namespace quorvel::grayscale {
namespace {

using test::promised;

/// Goes with the program.
class Folder {
public:
    Folder() : path_(test::freshFolder()) {}
    ~Folder()
    {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    QString file(const char* name) const { return QString::fromStdString((path_ / name).string()); }

private:
    std::filesystem::path path_;
};

/// Of a number with more digits than it can hold the last one may differ.
bool isSame(double one, double other)
{
    return std::fabs(one - other) < 1e-9 || (std::isnan(one) && std::isnan(other));
}

void holdReading(const PixelReading& reading, const QString& copy)
{
    promised(!reading.values.empty() && reading.readings > 0, "pixels of a reading");
    promised(std::ranges::all_of(reading.values,
                                 [](double each) { return std::isnan(each) || (each >= 0 && each <= 255); }),
             "brightnesses");
    const auto damaged = std::ranges::count_if(reading.values, [](double each) { return std::isnan(each); });
    promised(static_cast<std::ptrdiff_t>(reading.damaged.size()) == damaged, "each damaged pixel is named");
    promised(!inWords(reading).isEmpty(), "words for it");

    promised(saveReading(copy, reading).isEmpty(), "what was read can be saved");
    const auto again = loadReading(copy, link::TypeB);
    promised(static_cast<bool>(again), "and read again");
    promised(std::ranges::equal(again->values, reading.values, isSame), "pixel by pixel");
    promised(again->type == reading.type, "with its type");
}

} // namespace
} // namespace quorvel::grayscale

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel;
    static const grayscale::Folder folder;
    const auto file = folder.file("f.csv");
    std::ofstream(file.toStdString(), std::ios::binary) << test::FuzzInput(data, size).rest();
    if (const auto reading = grayscale::loadReading(file, link::TypeA)) {
        grayscale::holdReading(*reading, folder.file("copy.csv"));
    } else {
        test::promised(!reading.error().empty(), "a reason");
    }
    return 0;
}
