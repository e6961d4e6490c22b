#include "container/mp4.h"

#include "container/mp4/movie.h"
#include "container/mp4/output.h"
#include "container/mp4/visit.h"

namespace zat {

int AnalyzeMp4File(FileRecord* file, const Output& out) {
    const WorkMemory memory(long_walk_memory);
    Reader reader;
    reader_open(&reader, file, memory);
    mp4::Movie movie;
    movie.detailed = out.details != nullptr;
    mp4::collect_movie(&reader, &movie);
    reader_allow(&reader, table_allowance);
    mp4::write_movie(out, &reader, &movie);
    return 0;
}

} // namespace zat
