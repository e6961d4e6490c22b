#include "container/mp4.h"

#include "container/mp4/atom_reader.h"
#include "container/mp4/movie.h"
#include "container/mp4/output.h"
#include "container/mp4/visit.h"

namespace zat {

int AnalyzeMp4File(InfoRecord* record) {
    FileRecord file;
    if (FileOpen(&file, record->path) != 0) {
        return 1;
    }
    mp4::AtomReader reader;
    mp4::open_reader(&reader, &file);
    mp4::Movie movie;
    mp4::collect_movie(&reader, &movie);
    mp4::allow_work(&reader, mp4::description_work);
    mp4::write_movie(record, &reader, movie);
    FileClose(&file);
    return 0;
}

} // namespace zat
