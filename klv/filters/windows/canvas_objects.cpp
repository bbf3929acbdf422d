#include "klv/filters/windows/canvas_objects.h"

#include <algorithm>
#include <utility>

namespace klv {

void canvas_object_table::add(canvas_object object)
{
    const auto free = std::ranges::find_if(
        table_, [](const canvas_object& entry) { return std::holds_alternative<std::monostate>(entry); });
    set(static_cast<std::size_t>(free - table_.begin()), std::move(object));
}

void canvas_object_table::set(std::size_t number, canvas_object object)
{
    if (number >= numbers_)
        return;
    if (number >= table_.size())
        table_.resize(number + 1);
    table_[number] = std::move(object);
}

void canvas_object_table::remove(std::size_t number)
{
    if (number < table_.size())
        table_[number] = std::monostate();
}

const canvas_object* canvas_object_table::find(std::size_t number) const
{
    return number < table_.size() ? &table_[number] : nullptr;
}

} // namespace klv
