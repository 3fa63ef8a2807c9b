// The outcome of a generator call: a value, or the reason there is none. The generator never
// lets an exception leave a public function; callers look at ok() and error instead.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace plattmix::discgen {

template <typename T>
struct Result {
    std::optional<T> value;
    std::string error;  // empty when value holds something

    bool ok() const { return value.has_value(); }

    static Result Ok(T v) { return Result{std::move(v), {}}; }
    static Result Fail(std::string why) { return Result{std::nullopt, std::move(why)}; }
};

}  // namespace plattmix::discgen
