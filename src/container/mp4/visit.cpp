#include "container/mp4/visit.h"

#include "container/mp4/atom_walk.h"
#include "container/mp4/fragments.h"
#include "container/mp4/segment.h"

#include <algorithm>
#include <iterator>

namespace zat::mp4 {

namespace {

using Visit = void (*)(Reader*, const Atom&, Movie*);

// ISO/IEC 14496-12, 4.3. A second brand is ignored.
void visit_brand(Reader* reader, const Atom& atom, Movie* movie) {
    if (!movie->brand_seen) {
        movie->brand_seen = read_all(reader, atom.payload, 0, movie->brand, sizeof movie->brand);
    }
}

void visit_movie(Reader* /*reader*/, const Atom& atom, Movie* movie) {
    if (!movie->movie_seen) {
        movie->movie_seen = true;
        movie->offset = atom.offset;
    }
}

void visit_compressed_movie(Reader* /*reader*/, const Atom& /*atom*/, Movie* movie) {
    movie->compressed = true;
}

// ISO/IEC 14496-12, 8.2.2. Play time and scale are taken from where version 0 has them, in version
// 1 too; only the duration of fragments, which stands elsewhere, counts in the scale of version 1.
void visit_movie_header(Reader* reader, const Atom& atom, Movie* movie) {
    uint8_t fields[20];
    if (!read_all(reader, atom.payload, 0, fields, sizeof fields)) {
        return;
    }
    movie->header_seen = true;
    movie->header = atom.payload;
    movie->time_scale = ReadBE32(fields + 12);
    movie->duration = ReadBE32(fields + 16);
    movie->fragments_time_scale =
        fields[0] == 1 ? read_be32(reader, atom.payload, 20) : movie->time_scale;
}

void visit_track(Reader* /*reader*/, const Atom& /*atom*/, Movie* movie) {
    close_track(movie);
    movie->track_seen = true;
    movie->open_track = {};
    movie->track_is_open = true;
}

// ISO/IEC 14496-12, 8.3.2: the times before the ID have 64 bits in version 1.
void visit_track_header(Reader* reader, const Atom& atom, Movie* movie) {
    const bool version_1 = read_be32(reader, atom.payload, 0) >> 24 == 1;
    movie->open_track.id = read_be32(reader, atom.payload, version_1 ? 20 : 12);
    movie->open_track.header = atom.payload;
}

// ISO/IEC 14496-12, 8.4.2.
void visit_media_header(Reader* reader, const Atom& atom, Movie* movie) {
    const bool version_1 = read_be32(reader, atom.payload, 0) >> 24 == 1;
    movie->open_track.time_scale = read_be32(reader, atom.payload, version_1 ? 20 : 12);
    movie->open_track.media_header = atom.payload;
}

// ISO/IEC 14496-12, 8.4.3.
void visit_handler(Reader* reader, const Atom& atom, Movie* movie) {
    const uint32_t handler = read_be32(reader, atom.payload, 8);
    movie->open_track.handler = handler;
    movie->open_track.handler_atom = atom.payload;
    movie->open_track.kind = handler == fourcc("vide")   ? TrackKind::video
                             : handler == fourcc("soun") ? TrackKind::audio
                                                         : TrackKind::other;
}

void visit_sample_description(Reader* /*reader*/, const Atom& atom, Movie* movie) {
    movie->open_track.sample_description = atom.payload;
}

void visit_sample_sizes(Reader* /*reader*/, const Atom& atom, Movie* movie) {
    movie->open_track.sample_sizes = atom.payload;
    movie->open_track.compact_sizes = atom.type == fourcc("stz2");
}

void visit_chunk_offsets(Reader* /*reader*/, const Atom& atom, Movie* movie) {
    movie->open_track.chunk_offsets = atom.payload;
    movie->open_track.large_offsets = atom.type == fourcc("co64");
}

// The chapter list of Nero's tools: version 1 has four bytes more before the count.
void visit_chapter_list(Reader* reader, const Atom& atom, Movie* movie) {
    uint8_t fields[9] = {};
    read_some(reader, atom.payload, 0, fields, sizeof fields);
    movie->chapters = fields[0] == 0 ? fields[4] : fields[8];
}

// Places the payload of a track's atom that only details need.
template <Span Track::*field>
void visit_track_detail(Reader* /*reader*/, const Atom& atom, Movie* movie) {
    movie->open_track.*field = atom.payload;
}

template <Span Movie::*field>
void visit_movie_detail(Reader* /*reader*/, const Atom& atom, Movie* movie) {
    movie->*field = atom.payload;
}

// Types from the file's level down to the atom, each behind a "/".
struct Path {
    static constexpr size_t step = 5;
    static constexpr size_t longest = 6;

    uint32_t types[longest] = {};
    size_t length = 0;

    consteval Path(const char* text) {
        for (; *text == '/'; text += step) {
            uint32_t type = 0;
            for (size_t i = 1; i < step; ++i) {
                type = type << 8 | static_cast<uint8_t>(text[i]);
            }
            types[length++] = type;
        }
    }
};

struct Rule {
    Path path;
    Visit visit;
    bool of_details = false; // only they need it
};

// Shorter paths first.
constexpr Rule rules[] = {
    {"/ftyp", visit_brand},
    {"/moov", visit_movie},
    {"/moof", visit_fragment},
    {"/styp", visit_segment_type},
    {"/sidx", visit_segment_index},
    {"/emsg", visit_event_message},
    {"/moov/cmov", visit_compressed_movie},
    {"/moov/mvhd", visit_movie_header},
    {"/moov/mvex", visit_fragment_announcement},
    {"/moov/trak", visit_track},
    {"/moov/udta", visit_movie_detail<&Movie::user_data>, true},
    {"/moov/meta", visit_movie_detail<&Movie::metadata>, true},
    {"/moof/traf", visit_track_fragment},
    {"/moov/udta/chpl", visit_chapter_list},
    {"/moov/trak/tkhd", visit_track_header},
    {"/moov/trak/udta", visit_track_detail<&Track::user_data>, true},
    {"/moof/traf/tfhd", visit_track_fragment_header},
    {"/moof/traf/trun", visit_track_run},
    {"/moov/trak/mdia/mdhd", visit_media_header},
    {"/moov/trak/mdia/hdlr", visit_handler},
    {"/moov/trak/edts/elst", visit_track_detail<&Track::edit_list>, true},
    {"/moov/trak/tref/chap", visit_track_detail<&Track::chapter_reference>, true},
    {"/moov/trak/mdia/elng", visit_track_detail<&Track::extended_language>, true},
    {"/moov/trak/mdia/minf/stbl/stsd", visit_sample_description},
    {"/moov/trak/mdia/minf/stbl/stsz", visit_sample_sizes},
    {"/moov/trak/mdia/minf/stbl/stz2", visit_sample_sizes},
    {"/moov/trak/mdia/minf/stbl/stco", visit_chunk_offsets},
    {"/moov/trak/mdia/minf/stbl/co64", visit_chunk_offsets},
    {"/moov/trak/mdia/minf/stbl/stts", visit_track_detail<&Track::time_to_sample>, true},
    {"/moov/trak/mdia/minf/stbl/stsc", visit_track_detail<&Track::sample_to_chunk>, true},
};
static_assert(std::is_sorted(std::begin(rules), std::end(rules),
    [](const Rule& a, const Rule& b) { return a.path.length < b.path.length; }));

// Where the rules of each length begin; those of the longest end with the table.
struct Lengths {
    size_t begin[Path::longest + 2] = {};

    consteval Lengths() {
        for (size_t length = 0; length < std::size(begin); ++length) {
            begin[length] = static_cast<size_t>(std::count_if(std::begin(rules), std::end(rules),
                [length](const Rule& rule) { return rule.path.length < length; }));
        }
    }
};

constexpr Lengths lengths;

void apply_rules(Reader* reader, const Atom& atom, std::span<const uint32_t> path, Movie* movie) {
    const size_t length = path.size();
    if (length > Path::longest) {
        return;
    }
    for (size_t i = lengths.begin[length]; i != lengths.begin[length + 1]; ++i) {
        // The last type is what most rules differ in.
        const Rule& rule = rules[i];
        if (rule.path.types[length - 1] == atom.type &&
            std::equal(path.begin(), path.end() - 1, rule.path.types)) {
            if (!rule.of_details || movie->detailed) {
                rule.visit(reader, atom, movie);
            }
            return;
        }
    }
}

// What the file's end cuts off, as far as its own structure tells: media data and movie are atoms
// of the file's level.
void note_missing_bytes(const Atom& atom, Movie* movie) {
    constexpr uint32_t cut_types[] = {fourcc("mdat"), fourcc("moov"), fourcc("moof")};
    if (std::find(std::begin(cut_types), std::end(cut_types), atom.type) != std::end(cut_types)) {
        movie->missing_bytes = atom.missing;
    }
}

} // namespace

void collect_movie(Reader* reader, Movie* movie) {
    AtomWalk walk;
    start_walk(&walk, reader);
    Atom atom;
    std::span<const uint32_t> path;
    while (next_atom(&walk, &atom, &path)) {
        apply_rules(reader, atom, path, movie);
        if (path.size() == 1 && atom.missing != 0) {
            note_missing_bytes(atom, movie);
        }
    }
    reader->block.jump = BlockReader::jump_size; // from what fragments want
    reader->block.leaps = false;
    close_track(movie);
    settle_segment(movie);
    movie->large_atom_seen = walk.large_atom_seen;
}

} // namespace zat::mp4
