#include "container/mpeg_ps/walk.h"

#include "common/bytes/start_code.h"

#include <algorithm>

namespace zat::ps {

namespace {

// Enough for most headers and for what stands at the front of a payload, and for all.
constexpr uint32_t head_size = 64;
constexpr uint32_t largest_head_size = 1024;
constexpr size_t payload_start_size = 16;
// Bytes of the first step of a search, and how many times as long each further one is: mostly there
// are but a few zeros between units.
constexpr uint32_t first_search_size = 64;
constexpr uint32_t search_growth = 8;

constexpr bool is_unit_code(uint8_t code) {
    return code >= id_program_end;
}

// Reads the unit at a position. False when none begins there.
bool read_unit(Source* source, int64_t position, Unit* unit) {
    const Bytes head = source_view(source, position, head_size);
    if (head.size() < start_code_size || !has_at(head, 0, "\0\0\1") || !is_unit_code(head[3])) {
        return false;
    }
    unit->code = head[3];
    unit->position = position;
    unit->head = head;
    unit->packet = {};
    switch (unit->code) {
    case id_program_end:
        unit->end = position + static_cast<int64_t>(start_code_size);
        return true;
    case id_pack:
        unit->end = position;
        if (read_pack_header(&unit->pack, head) != 0) {
            return false;
        }
        unit->end += static_cast<int64_t>(unit->pack.size);
        return true;
    default:
        if (head.size() < pes_start_size) {
            return false;
        }
        if (read_pes_header(&unit->packet, head) != 0) { // a system header
            unit->packet.packet_length = ReadBE16(&head[4]);
        }
        unit->end = position + static_cast<int64_t>(pes_start_size) + unit->packet.packet_length;
        if (unit->code == id_program_stream_map ||
            unit->packet.payload + payload_start_size > head_size) {
            unit->head = source_view(source, position, largest_head_size);
            (void)read_pes_header(&unit->packet, unit->head);
        }
        return true;
    }
}

// Whether the stream goes on as it should behind a unit that a search found.
bool is_confirmed(Source* source, const Unit& unit) {
    if (unit.end >= source->size) {
        return unit.code != id_pack && unit.code != id_program_end;
    }
    const Bytes next = source_view(source, unit.end, start_code_size);
    if (next.size() < start_code_size || next[0] != 0 || next[1] != 0) {
        return false;
    }
    return next[2] == 0 ? unit.code != id_program_end : next[2] == 1 && is_unit_code(next[3]);
}

// Moves to the next start code of a unit. Tells whether only zeros were passed over.
bool search(Walk* walk, bool* zeros_only) {
    *zeros_only = true;
    for (uint32_t size = first_search_size; walk->position < walk->end;
         size = std::min(size * search_growth, Source::view_limit)) {
        const Bytes bytes = source_view(walk->source, walk->position, size);
        if (bytes.size() < start_code_size) {
            break;
        }
        int64_t at = find_start_code(bytes, 0);
        while (at >= 0 && !is_unit_code(bytes[static_cast<size_t>(at) + 3])) {
            at = find_start_code(bytes, static_cast<size_t>(at) + 3);
        }
        const size_t passed = at >= 0 ? static_cast<size_t>(at) : bytes.size() - 3;
        *zeros_only = *zeros_only && leading_zeros(bytes.first(passed)) == passed;
        walk->position += static_cast<int64_t>(passed);
        if (at >= 0) {
            return walk->position < walk->end;
        }
    }
    return false;
}

} // namespace

void walk_start(Walk* walk, Source* source, int64_t from, int64_t to, Begin begin) {
    walk->source = source;
    walk->position = from;
    walk->end = std::min(to, source->size);
    walk->in_order = begin == Begin::at_unit;
    walk->damaged = 0;
}

bool next_unit(Walk* walk, Unit* unit) {
    while (walk->position < walk->end) {
        bool zeros_only = false;
        if (walk->in_order && read_unit(walk->source, walk->position, unit)) {
            unit->in_order = true;
            walk->position = unit->end;
            return true;
        }
        const int64_t from = walk->position;
        if (walk->source->size - from < static_cast<int64_t>(pes_start_size)) {
            return false; // a unit that the end cut short
        }
        const bool found = search(walk, &zeros_only);
        if (walk->in_order && (!zeros_only || (found && walk->position == from))) {
            walk->in_order = false;
            ++walk->damaged;
        }
        if (!found) {
            return false;
        }
        if (walk->in_order) {
            continue; // behind zeros
        }
        if (read_unit(walk->source, walk->position, unit)) {
            const Unit candidate = *unit;
            if (is_confirmed(walk->source, candidate)) {
                read_unit(walk->source, candidate.position, unit); // its view again
                unit->in_order = false;
                walk->in_order = true;
                walk->position = unit->end;
                return true;
            }
        }
        walk->position += 3;
    }
    return false;
}

} // namespace zat::ps
