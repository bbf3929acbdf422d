#pragma once

#include "klv/filters/filter.h"

#include <cstdint>
#include <string_view>

namespace klv {

/// A filter of each format, the holder's own. What the process shares in oFILTERLIST, a thread has for itself
/// here. The order is that in which a file's format is probed; formats that are in no oFILTERLIST come last.
class filter_set {
public:
    filter_set() noexcept;
    ~filter_set();
    filter_set(const filter_set&) = delete;
    filter_set& operator=(const filter_set&) = delete;

    /// False when memory was out for a filter; the set then does without it.
    [[nodiscard]] bool complete() const noexcept { return complete_; }
    /// How many formats are in the list of the process.
    [[nodiscard]] std::uint16_t listed_count() const noexcept { return listed_count_; }
    /// Calls visit(oFILTER&) for each filter.
    template <class Visit> void for_each(Visit&& visit) const
    {
        for (oFILTER* filter = first_; filter; filter = filter->next_)
            visit(*filter);
    }

    /// The i-th filter in order, counting from 0; null past the end.
    [[nodiscard]] oFILTER* at(std::uint16_t i) const noexcept;
    /// Recognises a stream as oFILTERLIST::GetFilter does: by the extension of its name, then by its
    /// contents.
    [[nodiscard]] oFILTER* recognise(vSTREAM& stream) const noexcept;
    /// The filter that reads a stream: as recognised, else by the signature of a format that has one, else by
    /// the extension of a raster format whose contents are not recognised. Null for none.
    [[nodiscard]] oFILTER* reader_of(vSTREAM& stream) const noexcept;
    /// The filter that writes files with an extension ("PNG", "JPEG"), in upper case. Null for none.
    [[nodiscard]] oFILTER* writer_of(std::string_view extension) const noexcept;

private:
    template <class Accepts> oFILTER* find(Accepts accepts) const;
    template <class Accepts> oFILTER* find_listed(Accepts accepts) const;

    oFILTER* first_ = nullptr; // the filters are linked through themselves
    oFILTER* unlisted_ = nullptr; // the first that is in no list
    std::uint16_t listed_count_ = 0;
    bool complete_ = true;
};

} // namespace klv
