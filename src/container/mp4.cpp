#include "container/mp4.h"

#include "container/mp4/movie.h"
#include "container/mp4/output.h"
#include "container/mp4/visit.h"

namespace zat {

namespace {

// Of what may be read of the file, what the walk leaves for the descriptions that it has found.
constexpr FileWork kept_work = {1024, 8LL << 20};

void walk(Reader* reader, FileRecord* file, mp4::Movie* movie) {
    const FileWork limit = file->limit;
    file->limit = {limit.reads - kept_work.reads, limit.bytes - kept_work.bytes};
    mp4::collect_movie(reader, movie);
    file->limit = limit;
}

} // namespace

int AnalyzeMp4File(FileRecord* file, const Output& out) {
    const WorkMemory memory(long_walk_memory);
    Reader reader;
    reader_open(&reader, file, memory);
    mp4::Movie movie;
    movie.detailed = out.details != nullptr;
    walk(&reader, file, &movie);
    reader_allow(&reader, table_allowance);
    mp4::write_movie(out, &reader, &movie);
    return 0;
}

} // namespace zat
