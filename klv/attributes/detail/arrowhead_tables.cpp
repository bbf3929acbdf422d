#include "klv/attributes/detail/arrowhead_tables.h"

namespace klv {

namespace {

constexpr vPOINT triangle[]{{55, 25}, {0, 0}, {55, -25}};
constexpr vPOINT triangle_clip[]{{55, 25}, {-10, 25}, {-10, -25}, {55, -25}};

constexpr vPOINT barb[]{{60, 0}, {70, 25}, {0, 0}, {70, -25}};
constexpr vPOINT barb_clip[]{{60, 0}, {70, 25}, {0, 25}, {-10, -25}, {70, -25}};

constexpr vPOINT open_arrow[]{{20, 0}, {60, 19}, {60, 31}, {0, 0}, {60, -31}, {60, -19}};
constexpr vPOINT open_arrow_clip[]{{20, 0}, {60, 19}, {60, 31}, {-10, 31}, {-10, -31}, {60, -31}, {60, -19}};

constexpr vPOINT bar[]{{10, 30}, {0, 30}, {0, -30}, {10, -30}};
constexpr vPOINT bar_clip[]{{10, 30}, {-10, 30}, {-10, -30}, {10, -30}};

constexpr vPOINT arrow_and_bar[]{{20, 0}, {60, 19}, {60, 31}, {10, 5}, {10, 30}, {0, 30}, {0, -30}, {10, -30},
    {10, -5}, {60, -31}, {60, -19}};

constexpr vPOINT reversed_arrow[]{{60, 0}, {0, 31}, {0, 19}, {40, 0}, {0, -19}, {0, -31}};
constexpr vPOINT reversed_arrow_clip[]{{60, 0}, {-10, 31}, {-10, -31}};

constexpr vPOINT double_reversed_arrow[]{{110, 0}, {50, 31}, {50, 19}, {80, 5}, {50, 5}, {0, 31}, {0, 19},
    {40, 0}, {0, -19}, {0, -31}, {50, -5}, {80, -5}, {50, -19}, {50, -31}};
constexpr vPOINT double_reversed_arrow_clip[]{{110, 0}, {50, 31}, {-10, 31}, {-10, -31}, {50, -31}};

constexpr vPOINT feather[]{{110, 0}, {60, 30}, {0, 30}, {50, 0}, {0, -30}, {60, -30}};
constexpr vPOINT feather_clip[]{{110, 0}, {60, 30}, {-10, 30}, {-10, -30}, {60, -30}};

} // namespace

constinit const std::array<arrowhead_design, 10> arrowhead_designs{{
    {false, triangle, triangle_clip},
    {true, triangle, triangle_clip},
    {false, barb, barb_clip},
    {true, barb, barb_clip},
    {false, open_arrow, open_arrow_clip},
    {false, bar, bar_clip},
    {false, arrow_and_bar, open_arrow_clip},
    {false, reversed_arrow, reversed_arrow_clip},
    {false, double_reversed_arrow, double_reversed_arrow_clip},
    {false, feather, feather_clip},
}};

} // namespace klv
