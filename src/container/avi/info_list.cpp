#include "container/avi/info_list.h"

#include "common/record/extra_info.h"
#include "common/tags/info_list.h"
#include "common/text/text.h"

namespace zat::avi {

void write_info(Reader* reader, Span list, const Output& out) {
    TagTexts texts;
    TagText writer = {};
    read_info_list(reader, list, &texts, writer);
    write_artist_and_title(texts, out);
    append_writer(out, bounded_text(writer));
}

} // namespace zat::avi
