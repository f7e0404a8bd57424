#pragma once

#include "management/JsonLine.h"
#include "management/Sentence.h"
#include "management/exchange/Nouns.h"

#include <cstddef>
#include <optional>
#include <string>

namespace management {

/// A line of an exported directory.
struct ExportedLine {
    long number = 0; ///< in the file, from 1
    const Noun* noun = nullptr;
    JsonObject object = {}; ///< without the noun
    Sentence problem = {};  ///< why it cannot be used; empty where it can so far
};

/// Where the lines of a directory come from.
class LineSource {
public:
    LineSource() = default;
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;
    virtual ~LineSource() = default;

    /// The next line; nothing at the end and when the file cannot be read.
    virtual std::optional<ExportedLine> Next() = 0;
    /// Whether there are no more lines because the file cannot be read.
    [[nodiscard]] virtual bool Failed() const = 0;
    /// How many bytes the lines had since the last time.
    virtual std::size_t TakeBytes() = 0;
};

} // namespace management
