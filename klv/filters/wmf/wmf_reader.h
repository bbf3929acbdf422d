#pragma once

#include "klv/attributes/line_spec.h"
#include "klv/base/memory.h"
#include "klv/filters/filter.h"
#include "klv/filters/wmf/wmf_bitmaps.h"
#include "klv/filters/wmf/wmf_blit.h"
#include "klv/filters/wmf/wmf_clip.h"
#include "klv/filters/wmf/wmf_graduation.h"
#include "klv/filters/wmf/wmf_mapping.h"
#include "klv/filters/wmf/wmf_objects.h"
#include "klv/filters/wmf/wmf_text.h"
#include "klv/formats/wmf_records.h"
#include "klv/geometry/shape.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace klv {

class oPROGRESS;
class vMETAFILE;
class vSTREAM;

/// What a metafile's SAVEDC record saves.
struct wmf_state {
    explicit wmf_state(const wmf_mapping& start)
        : mapping(start)
    {
    }

    wmf_mapping mapping;
    COLORREF text_colour = 0;
    COLORREF background = 0xFFFFFF;
    std::uint16_t text_align = 0;
    bool winding = false;
    bool clipping = false; ///< documented level: points are moved into clip_rect
    vRECT clip_rect;

    // The faithful level keeps the selected objects and the whole clip area too.
    wmf_clip_area clip;
    wmf_pen_object pen;
    wmf_brush_object brush;
    std::optional<wmf_font_object> font;
    vPOINT current_point;
};

/// One conversion of a Windows Metafile into a recorded picture.
class wmf_reader {
public:
    /// \param faithful reads at the level that other programs' files need.
    wmf_reader(vMETAFILE& picture, bool faithful, oPROGRESS* progress);

    oFILTER_STATUS read(vSTREAM& in);

private:
    using point_list = std::vector<vPOINT, vALLOCATOR<vPOINT>>;
    using count_list = std::vector<std::int32_t, vALLOCATOR<std::int32_t>>;

    // Headers, records in file order, the page.
    bool read_headers(byte_reader& in);
    oFILTER_STATUS read_records(byte_reader& in);
    std::optional<wmf_record> next_record(byte_reader& in, oFILTER_STATUS& status) const;
    oFILTER_STATUS read_all(byte_reader& in);
    void finish_picture();
    void set_extents();

    // One record.
    void handle(const wmf_record& record);
    bool handle_state(const wmf_record& record, byte_reader& in);
    bool handle_object(const wmf_record& record, byte_reader& in);
    bool handle_figure(const wmf_record& record, byte_reader& in);
    bool handle_bitmap(const wmf_record& record, byte_reader& in);
    bool handle_text(const wmf_record& record, byte_reader& in);
    void handle_escape(byte_reader& in);

    // State.
    void change_mapping(wmf_function function, byte_reader& in);
    void scale_extent(bool window, byte_reader& in);
    void save_state();
    void restore_state(int which);
    void apply_state(const wmf_state& before);
    void change_clip(wmf_function function, byte_reader& in);
    void select_clip_region(std::size_t object_number);
    void record_clip();

    // Objects.
    void create_pen(byte_reader& in);
    void create_font(byte_reader& in);
    void create_pattern_brush(byte_reader& in);
    void select(const wmf_object& object);
    void select_pen();
    void select_brush();
    void select_font();
    wmf_text_size text_size(const wmf_font_object& font) const;
    int pen_width(const wmf_pen_object& pen) const;

    // Figures.
    vPOINT map(int x, int y) const;
    vRECT map(const wmf_rect& rect) const;
    void line_to(const vPOINT& point);
    void flush_lines();
    template <typename Draw> void draw_figure(Draw draw);
    void read_points(byte_reader& in, std::size_t count);
    void polygon(byte_reader& in, bool closed);
    void poly_polygon(byte_reader& in);
    void draw_polygons();
    void arc(byte_reader& in, int closure);
    void pattern_blit(const wmf_pat_blt& record);
    void fill_plainly(const vRECT& rect, const vFILLSPEC& fill);
    void set_pixel(byte_reader& in);

    // Bitmaps.
    struct blit;
    void stretch_dib(byte_reader& in);
    void dib_stretch_blt(byte_reader& in);
    bool handle_faithful_bitmap(const wmf_record& record, byte_reader& in);
    void blit_without_bitmap(const wmf_record& record, byte_reader& in);
    void bit_blt(byte_reader& in, bool device_dependent);
    void stretch_blt(byte_reader& in);
    void set_dib_to_device(byte_reader& in);
    void draw_bitmap(std::unique_ptr<oMEMDIB> bitmap, const blit& where);

    // Text.
    void text_out(byte_reader& in);
    void ext_text_out(byte_reader& in);
    void draw_text(byte_reader& in);
    void text(std::string_view characters, const vPOINT& point, std::span<const std::uint8_t> spacing);
    void faithful_text(std::string_view characters, vPOINT point, std::span<const std::uint8_t> spacing);
    void spaced_text(std::string_view characters, std::span<const std::uint8_t> spacing, const vPOINT& start,
        const wmf_text_measures& measures, bool font_fits);
    void text_run(std::string_view characters, const vPOINT& baseline);

    vMETAFILE& picture_;
    const bool faithful_;
    oPROGRESS* progress_;

    std::optional<wmf_placeable_header> placeable_;
    wmf_header header_;
    bool default_page_ = false; ///< the picture's page was the library's default
    bool sized_before_ = false; ///< the picture had a logical size before the conversion
    bool has_window_ = false; ///< the file set a window extent

    wmf_state state_;
    std::vector<wmf_state, vALLOCATOR<wmf_state>> saved_;
    wmf_object_table objects_;
    wmf_graduation graduation_;
    wmf_transparent_bitmap transparent_bitmap_;
    wmf_blit_pairs blits_;
    wmf_text_measurer measurer_;
    wmf_clip_area recorded_clip_;
    bool clip_recorded_ = false;
    std::size_t clip_rectangles_ = 0; ///< recorded so far
    wmf_colour_table palette_; ///< of the selected palette

    point_list lines_; ///< points of line segments not yet drawn
    point_list points_;
    count_list counts_;
    vSHAPE shape_;
};

} // namespace klv
