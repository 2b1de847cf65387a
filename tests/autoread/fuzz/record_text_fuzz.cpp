#include "autoread/record_file.h"
#include "support/fresh_folder.h"
#include "support/fuzz_input.h"

#include <cmath>
#include <fstream>
#include <iterator>

/// Takes any bytes for the text file of a download, reads it and goes on with it: what was refused stays as it is, and what
/// was read is followed by one more record.
namespace quorvel::autoread {
namespace {

using test::promised;

/// The file in which the input is; goes with the program.
class InputFile {
public:
    InputFile() : folder_(test::freshFolder()) {}
    ~InputFile()
    {
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }
    std::filesystem::path path() const { return folder_ / "f.csv"; }

    void write(const std::string& content) const { std::ofstream(path(), std::ios::binary) << content; }
    std::string content() const
    {
        std::ifstream file(path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path folder_;
};

void holdRows(const RecordTable& table)
{
    for (const auto& row : table.rows) {
        for (std::size_t i = 0; i < protocol::kMostReadings; ++i) {
            const auto& reading = row.readings[i];
            promised(!reading || std::isfinite(*reading), "readings are numbers");
            promised(!reading || i < table.layout.readings, "readings of columns that are there");
        }
    }
}

/// Goes on with the file as a download does.
void holdNextRow(const InputFile& file, const RecordTable& before)
{
    Record next{jet::Date::of({2024, 2, 29, 23, 59, 58}), {}};
    next.readings[0] = -12.5F;
    auto sink = openRecordFile(file.path(), before.layout);
    promised(sink && (*sink)->append(next) && (*sink)->close(), "what can be read can be continued");
    const auto after = readRecordFile(file.path());
    promised(after && after->layout == before.layout && !after->tornRow, "what was continued can be read");
    auto rows = before.rows;
    rows.push_back(next);
    promised(after->rows == rows, "the earlier rows and one more");
}

} // namespace
} // namespace quorvel::autoread

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel;
    static const autoread::InputFile file;
    const auto input = test::FuzzInput(data, size).rest();
    file.write(input);
    const auto table = autoread::readRecordFile(file.path());
    if (table) {
        autoread::holdRows(*table);
        autoread::holdNextRow(file, *table);
    } else {
        test::promised(!table.error().empty(), "a reason");
        test::promised(file.content() == input, "what is refused stays as it is");
    }
    return 0;
}
