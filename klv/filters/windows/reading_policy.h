#pragma once

namespace klv {

/// How literally a reader of a Windows format takes its file: what it decides one way where it keeps to the
/// library's documentation, and another way where other programs' files need it to look as they were meant.
/// A canvas and the decoder that speaks to it are made with one of the two below and ask for each decision by
/// its name; none asks for the level.
struct reading_policy {
    // Of the file.
    /// The records are those that the bytes hold, up to the end record: announced sizes are often wrong.
    bool trusts_bytes_over_sizes = false;
    /// Records are read that the documentation passes over: bit blits, blits without a bitmap, single pixels.
    bool reads_every_drawing = false;
    /// Bitmaps may have any of the published headers, not only the one of 40 bytes.
    bool reads_every_header = false;
    /// An object that can't be made still takes its number, so that later ones keep theirs.
    bool keeps_object_numbers = false;
    /// More than 255 polygons in a poly-polygon are read.
    bool reads_all_polygons = false;
    /// Only the two documented flags say that a text has a rectangle; an opaque one is painted.
    bool reads_text_flags = false;

    // Of the page.
    /// The page's box may be given from any corner, and its origin is the drawing's.
    bool takes_box_from_any_corner = false;
    /// Picture units are finer than the file's, so that what was drawn in fine units keeps its places.
    bool uses_fine_units = false;
    /// The page is the box, or without one as large as what was drawn, whatever the picture held before.
    bool lets_file_size_page = false;

    // Of the state.
    /// The clip area is recorded; else points are moved into the last clip rectangle.
    bool records_clips = false;
    /// Saved states hold everything and are named by number; else the last one, and of it the mapping, the
    /// text colour and the clip.
    bool saves_whole_state = false;
    /// Pens and fonts take the mapping in force when they are selected or it changes; else when they are
    /// made.
    bool rescales_objects = false;
    /// The fill mode of polygons is honoured.
    bool keeps_fill_mode = false;
    /// Hatched brushes hatch.
    bool keeps_hatches = false;
    /// An attribute that is in force already is not recorded again.
    bool skips_repeated_attributes = false;

    // Of drawing.
    /// Raster operations decide how bitmaps and pattern fills are drawn, and which part of a bitmap is.
    bool honours_raster_operations = false;
    /// Text is measured and placed by its alignment and advances; else it starts at its point.
    bool measures_text = false;
};

inline constexpr reading_policy documented_reading;

inline constexpr reading_policy faithful_reading{
    .trusts_bytes_over_sizes = true,
    .reads_every_drawing = true,
    .reads_every_header = true,
    .keeps_object_numbers = true,
    .reads_all_polygons = true,
    .reads_text_flags = true,
    .takes_box_from_any_corner = true,
    .uses_fine_units = true,
    .lets_file_size_page = true,
    .records_clips = true,
    .saves_whole_state = true,
    .rescales_objects = true,
    .keeps_fill_mode = true,
    .keeps_hatches = true,
    .skips_repeated_attributes = true,
    .honours_raster_operations = true,
    .measures_text = true,
};

} // namespace klv
