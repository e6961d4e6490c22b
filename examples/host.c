/* Prints the report of one file and a table of its streams: host CATALOGUE_DIRECTORY/ FILE */
#include <stdio.h>
#include <string.h>
#include <zat/details.h>

int main(int argc, char** argv) {
    static const char* const kinds[] = {"?", "video", "audio", "text", "data"};
    static InfoRecord record; /* cleared to zero */
    static ZatDetails details;
    static char report[ZAT_REPORT_SIZE];
    uint32_t i;
    if (argc != 3 || strlen(argv[2]) >= sizeof record.path) {
        return 1;
    }
    SetPath(argv[1]);
    strcpy(record.path, argv[2]);
    details.size = sizeof details;
    GetDetails(&record, &details);
    ReFormFull(&record, report);
    fputs(report, stdout);
    for (i = 0; i < details.stream_count && i < ZAT_STREAM_SLOTS; ++i) {
        const ZatStream* stream = &details.streams[i];
        printf("%-6s%-14s", kinds[stream->kind <= ZAT_STREAM_DATA ? stream->kind : 0], stream->codec);
        if (stream->kind == ZAT_STREAM_VIDEO) {
            printf("%ux%u %.3f fps ", stream->width, stream->height, stream->frame_rate);
        } else if (stream->kind == ZAT_STREAM_AUDIO) {
            printf("%u Hz, %u channels ", stream->sample_rate, stream->channels);
        }
        printf("%.0f kbit/s %s\n", (double)stream->bit_rate / 1000, stream->language);
    }
    return record.type_code < FILETYPE_MEDIA;
}
