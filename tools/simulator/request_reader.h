#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/axis.h"

namespace simulator {

/// Cuts the bytes of the line into requests. A request ends at its line-feed. Some hosts send
/// queries without a line end, so a text that ends in "?" also counts as a request once the line
/// has been quiet for a while; a line end that comes later belongs to it and starts nothing.
/// An "@" always begins a new request: what stood before it was a query without a line end, or is
/// dropped. A text without an end is dropped when it grows too long. Not thread-safe.
class RequestReader {
  public:
    static constexpr std::size_t LongestRequest = 256;

    explicit RequestReader(Time quietTime) : quietTime_(quietTime) {}

    /// The requests that `bytes` completes, each as it stood on the wire, with its line end.
    std::vector<std::string> Receive(std::string_view bytes, Time now);
    /// Forgets what has come without making a request yet.
    void Forget();
    /// The query without a line end that has become one by `now`, if there is one.
    std::optional<std::string> TakeQuiet(Time now);
    /// When `TakeQuiet` will have something, if nothing comes before.
    std::optional<Time> QuietAt() const;

  private:
    bool LooksComplete() const { return pending_.ends_with('?') && pending_.starts_with('@'); }
    void TakePending(std::vector<std::string>& requests);

    Time quietTime_;
    std::string pending_;
    bool tooLong_ = false;
    Time lastByte_{0};
};

}  // namespace simulator
