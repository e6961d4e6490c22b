// Identifiers of Matroska's elements (RFC 9559, section 5), by the element that holds them.
#pragma once

#include <cstdint>

namespace zat::matroska {

enum Id : uint32_t {
    id_ebml = 0x1A45DFA3,
    id_doc_type = 0x4282,

    id_segment = 0x18538067,

    id_seek_head = 0x114D9B74,
    id_seek = 0x4DBB,
    id_seek_id = 0x53AB,
    id_seek_position = 0x53AC,

    id_info = 0x1549A966,
    id_timestamp_scale = 0x2AD7B1,
    id_duration = 0x4489,
    id_date = 0x4461,
    id_title = 0x7BA9,
    id_muxing_app = 0x4D80,
    id_writing_app = 0x5741,

    id_cluster = 0x1F43B675,
    id_timestamp = 0xE7,
    id_position = 0xA7,
    id_prev_size = 0xAB,
    id_simple_block = 0xA3,
    id_block_group = 0xA0,
    id_block = 0xA1,
    id_block_duration = 0x9B,

    id_tracks = 0x1654AE6B,
    id_track_entry = 0xAE,
    id_track_number = 0xD7,
    id_track_uid = 0x73C5,
    id_track_type = 0x83,
    id_flag_enabled = 0xB9,
    id_flag_default = 0x88,
    id_flag_forced = 0x55AA,
    id_flag_hearing_impaired = 0x55AB,
    id_flag_visual_impaired = 0x55AC,
    id_flag_commentary = 0x55AF,
    id_default_duration = 0x23E383,
    id_name = 0x536E,
    id_language = 0x22B59C,
    id_language_bcp47 = 0x22B59D,
    id_codec_id = 0x86,
    id_codec_private = 0x63A2,
    id_block_addition_mapping = 0x41E4,
    id_block_addition_type = 0x41E7,
    id_block_addition_data = 0x41ED,

    id_video = 0xE0,
    id_interlaced = 0x9A,
    id_field_order = 0x9D,
    id_pixel_width = 0xB0,
    id_pixel_height = 0xBA,
    id_crop_bottom = 0x54AA,
    id_crop_top = 0x54BB,
    id_crop_left = 0x54CC,
    id_crop_right = 0x54DD,
    id_display_width = 0x54B0,
    id_display_height = 0x54BA,
    id_display_unit = 0x54B2,
    id_uncompressed_fourcc = 0x2EB524,
    id_frame_rate = 0x2383E3,
    id_colour = 0x55B0,
    id_matrix = 0x55B1,
    id_bits_per_channel = 0x55B2,
    id_chroma_subsampling_x = 0x55B3,
    id_chroma_subsampling_y = 0x55B4,
    id_range = 0x55B9,
    id_transfer = 0x55BA,
    id_primaries = 0x55BB,

    id_audio = 0xE1,
    id_sampling_frequency = 0xB5,
    id_output_sampling_frequency = 0x78B5,
    id_channels = 0x9F,
    id_bit_depth = 0x6264,

    id_content_encodings = 0x6D80,
    id_content_encoding = 0x6240,
    id_encoding_scope = 0x5032,
    id_encoding_type = 0x5033,
    id_compression = 0x5034,
    id_compression_algorithm = 0x4254,
    id_compression_settings = 0x4255,

    id_cues = 0x1C53BB6B,

    id_attachments = 0x1941A469,
    id_attached_file = 0x61A7,
    id_file_media_type = 0x4660,

    id_chapters = 0x1043A770,
    id_edition_entry = 0x45B9,
    id_edition_flag_default = 0x45DB,
    id_chapter_atom = 0xB6,

    id_tags = 0x1254C367,
    id_tag = 0x7373,
    id_targets = 0x63C0,
    id_target_type_value = 0x68CA,
    id_tag_track_uid = 0x63C5,
    id_tag_edition_uid = 0x63C9,
    id_tag_chapter_uid = 0x63C4,
    id_tag_attachment_uid = 0x63C6,
    id_simple_tag = 0x67C8,
    id_tag_name = 0x45A3,
    id_tag_string = 0x4487,
};

} // namespace zat::matroska
