#include "autoread/visit_fixture.h"

#include <random>

namespace quorvel::autoread {

namespace {

/// A line on which single bits flip, both ways, at a rate per character.
class BadLine : public test::VisitTo {
protected:
    BadLine()
    {
        ring.take(300);
        through = ring.table(false);
        auto& line = ring.line;
        line.answer = [this](const std::string& frame) {
            auto asked = frame + "\r\n";
            flip(asked);
            // a readout answers whole frames to it only
            if (!asked.starts_with(":01") || !asked.ends_with("FF\r\n")) return std::string();
            if (asked.starts_with(":0124") &&
                asked.substr(5, 4).find_first_not_of("0123456789") != std::string::npos)
                return std::string();
            if (asked.starts_with(":0124") && text::integerOf(asked.substr(5, 4)) >= ring.capacity())
                return std::string();
            auto reply = ring.answerTo(asked.substr(0, asked.size() - 2));
            flip(reply);
            return reply;
        };
    }
    void flip(std::string& characters)
    {
        for (auto& character : characters) {
            if (chance(random) < rate) character = static_cast<char>(character ^ (1 << bit(random)));
        }
    }
    /// The rows that differ from the ring's after a download with this seed; those that are missing differ.
    int wrongRows(unsigned seed, const Asking& asking)
    {
        random.seed(seed);
        std::filesystem::remove(file("a.csv"));
        Visit again(ring.line.module1, 1, link::TypeA, book, asking);
        const auto report = again.download(file("a.csv"), Existing::Keep, {});
        EXPECT_TRUE(report.complete()) << "seed " << seed << ": " << report.reason;
        if (!report.complete()) return 300;
        const auto got = test::linesOf(content("a.csv"));
        const auto wanted = test::linesOf(through);
        EXPECT_EQ(got.size(), wanted.size());
        int wrong = 0;
        for (std::size_t i = 0; i < std::min(got.size(), wanted.size()); ++i) {
            wrong += got[i] == wanted[i] ? 0 : 1;
        }
        return wrong;
    }

    test::RingReadout ring{1000};
    std::string through;
    double rate = 0.0001;
    std::minstd_rand random;
    std::uniform_real_distribution<> chance{0, 1};
    std::uniform_int_distribution<> bit{0, 7};
};

TEST_F(BadLine, RetriesAndVerifyGiveTheRingInEveryRun)
{
    for (unsigned seed = 1; seed <= 10; ++seed) {
        EXPECT_EQ(wrongRows(seed, {.retries = 3, .verify = true}), 0) << "seed " << seed;
    }
}

TEST_F(BadLine, WithoutVerifyFlippedDigitsPass)
{
    rate = 0.001;
    int wrong = 0;
    for (unsigned seed = 1; seed <= 5; ++seed) {
        wrong += wrongRows(seed, {.retries = 6});
    }
    EXPECT_GT(wrong, 0) << "the line was not bad enough to show what verifying is for";
    EXPECT_LT(wrong, 60);
    EXPECT_EQ(wrongRows(1, {.retries = 6, .verify = true}), 0);
}

} // namespace

} // namespace quorvel::autoread
