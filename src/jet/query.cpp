#include "jet/query.h"

#include "jet/text_coding.h"

namespace quorvel::jet {

namespace {

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

/// Takes words off the front of a text.
class Words {
public:
    explicit Words(std::string_view text) : rest_(text) { skipBlanks(); }

    bool atEnd() const { return rest_.empty(); }

    bool take(char mark)
    {
        if (rest_.empty() || rest_.front() != mark) return false;
        rest_.remove_prefix(1);
        skipBlanks();
        return true;
    }

    bool takeKeyword(std::string_view keyword)
    {
        const auto word = rest_.substr(0, wordLength());
        if (!sameName(word, keyword)) return false;
        drop(word.size());
        return true;
    }

    /// @return nothing when no name comes next.
    std::optional<std::string> takeName()
    {
        if (!rest_.empty() && rest_.front() == '[') {
            const auto end = rest_.find(']');
            if (end == std::string_view::npos || end == 1) return std::nullopt;
            std::string name(rest_.substr(1, end - 1));
            drop(end + 1);
            return name;
        }
        const std::size_t length = wordLength();
        if (length == 0) return std::nullopt;
        std::string name(rest_.substr(0, length));
        drop(length);
        return name;
    }

private:
    std::size_t wordLength() const
    {
        std::size_t length = 0;
        while (length < rest_.size() && !isBlank(rest_[length]) &&
               std::string_view(",;*[]").find(rest_[length]) == std::string_view::npos) {
            ++length;
        }
        return length;
    }

    void drop(std::size_t count)
    {
        rest_.remove_prefix(count);
        skipBlanks();
    }

    void skipBlanks()
    {
        while (!rest_.empty() && isBlank(rest_.front()))
            rest_.remove_prefix(1);
    }

    std::string_view rest_;
};

} // namespace

std::optional<Query> parseQuery(std::string_view text)
{
    Words words(text);
    if (!words.takeKeyword("select") || !words.take('*') || !words.takeKeyword("from")) return std::nullopt;
    Query query;
    auto table = words.takeName();
    if (!table) return std::nullopt;
    query.table = std::move(*table);
    if (words.takeKeyword("order")) {
        if (!words.takeKeyword("by")) return std::nullopt;
        do {
            auto field = words.takeName();
            if (!field) return std::nullopt;
            const bool descending = words.takeKeyword("desc");
            if (!descending) words.takeKeyword("asc");
            query.order.push_back({std::move(*field), descending});
        } while (words.take(','));
    }
    words.take(';');
    if (!words.atEnd()) return std::nullopt;
    return query;
}

std::string_view bareName(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    if (text.size() > 2 && text.front() == '[' && text.back() == ']') text = text.substr(1, text.size() - 2);
    return text;
}

} // namespace quorvel::jet
