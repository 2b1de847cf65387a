#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

/// Failures as values. A reason is a sentence or two for the person at the screen, UTF-8: it names the file, says
/// what happened and what to do next.
namespace quorvel::files {

/// Why something could not be done.
struct Failure {
    std::string reason;
};

/// A T, or the reason why there is none. Ask (`if (!result) ... result.error()`) before taking.
template<class T>
class [[nodiscard]] Result {
public:
    Result(T value) : held_(std::move(value)) {}           // NOLINT(google-explicit-constructor)
    Result(Failure failure) : held_(std::move(failure)) {} // NOLINT(google-explicit-constructor)

    explicit operator bool() const { return held_.index() == 0; }

    /// The value. Only when there is one.
    T& operator*() { return *std::get_if<0>(&held_); }
    const T& operator*() const { return *std::get_if<0>(&held_); }
    T* operator->() { return std::get_if<0>(&held_); }
    const T* operator->() const { return std::get_if<0>(&held_); }

    /// The reason. Only when there is no value.
    const std::string& error() const { return std::get_if<1>(&held_)->reason; }
    Failure failure() const { return *std::get_if<1>(&held_); }

private:
    std::variant<T, Failure> held_;
};

/// Done, or the reason why not.
class [[nodiscard]] Status {
public:
    Status() = default;
    Status(Failure failure) : failure_(std::move(failure)) {} // NOLINT(google-explicit-constructor)

    explicit operator bool() const { return !failure_; }
    const std::string& error() const { return failure_->reason; } ///< only when not done
    Failure failure() const { return *failure_; }

private:
    std::optional<Failure> failure_;
};

} // namespace quorvel::files
