#include "messages.h"

#include <iterator>

namespace host {

namespace {

struct Texts {
    Message id;
    std::string_view text[2]; // by language; {1} to {3} are the places of what is put in
};

constexpr Texts texts[] = {
    {Message::try_help, {"Try 'zat --help'.", "使い方は 'zat --help' で表示されます。"}},
    {Message::no_path, {"no file named", "ファイルが指定されていません"}},
    {Message::unknown_option, {"{1}: no such option", "{1}: そのようなオプションはありません"}},
    {Message::needs_value, {"{1} needs a value", "{1} には値が必要です"}},
    {Message::takes_no_value, {"{1} takes no value", "{1} に値は指定できません"}},
    {Message::given_twice, {"{1} is given twice", "{1} が二度指定されています"}},
    {Message::is_none_of, {"{1}: {2} is none of {3}", "{1}: {2} は次のどれでもありません: {3}"}},
    {Message::is_no_number,
        {"{1}: {2} is no number from 1 to {3}", "{1}: {2} は 1 から {3} までの数ではありません"}},
    {Message::goes_with_only, {"{1} goes with {2} only", "{1} は {2} と一緒にだけ指定できます"}},
    {Message::excludes, {"{1} does not go with {2}", "{1} と {2} は一緒に指定できません"}},
    {Message::is_no_directory, {"{1}: {2} is no directory", "{1}: {2} はフォルダではありません"}},
    {Message::library_missing,
        {"the library {1} cannot be loaded: {2}", "ライブラリ {1} を読み込めません"}},
    {Message::library_lacks_export,
        {"the library {1} lacks an entry point", "ライブラリ {1} に必要な関数がありません"}},
    {Message::unknown_type, {"{1}: unknown type: {2}", "{1}: 種類が不明です: {2}"}},
    {Message::empty_name, {"the name is empty", "名前が空です"}},
    {Message::is_directory, {"is a directory", "フォルダです"}},
    {Message::is_no_regular_file, {"is no regular file", "通常のファイルではありません"}},
    {Message::cannot_be_read, {"cannot be read", "読み込めません"}},
    {Message::name_out_of_reach,
        {"its name is too long or outside the system's code page, and it has no short form",
            "名前が長すぎるかシステムのコードページになく、短い名前もありません"}},
    {Message::standard_input, {"standard input", "標準入力"}},
    {Message::empty_file, {"the file is empty", "ファイルが空です"}},
    {Message::text_file, {"a text file", "テキストファイルです"}},
    {Message::executable, {"an executable", "実行ファイルです"}},
    {Message::archive, {"a ZIP archive", "ZIP ファイルです"}},
    {Message::nothing_behind_tag, {"nothing but zeros behind the tag", "タグの後ろがゼロだけです"}},
    {Message::unsupported, {"unsupported format", "未対応の形式です"}},
    {Message::nothing_read, {"nothing could be read", "何も読み込めません"}},
    {Message::no_memory, {"no memory", "メモリが足りません"}},
    {Message::not_found, {"No such file or directory", "ファイルまたはフォルダがありません"}},
    {Message::permission_denied, {"Permission denied", "アクセスが許可されていません"}},
    {Message::path_too_long, {"File name too long", "名前が長すぎます"}},
    {Message::is_in_use, {"In use by another program", "ほかのプログラムが使用中です"}},
    {Message::too_many_links,
        {"Too many levels of symbolic links", "シンボリックリンクの段数が多すぎます"}},
    {Message::too_many_open_files, {"Too many open files", "開いているファイルが多すぎます"}},
    {Message::no_space, {"No space left on device", "デバイスに空きがありません"}},
    {Message::read_only, {"Read-only file system", "読み込み専用のファイルシステムです"}},
    {Message::input_output, {"Input/output error", "入出力エラーです"}},
    {Message::system_error, {"error {1} of the system", "システムのエラー {1}"}},
    {Message::output_failed,
        {"standard output cannot be written: {1}", "標準出力に書き込めません: {1}"}},
    {Message::one_file, {"1 file", "1 ファイル"}},
    {Message::files, {"{1} files", "{1} ファイル"}},
    {Message::described, {"{1} described", "解析済み {1}"}},
    {Message::other_types, {"{1} of other types", "対象外の種類 {1}"}},
    {Message::not_media, {"{1} not media", "メディア以外 {1}"}},
    {Message::unreadable, {"{1} unreadable", "読み込めないもの {1}"}},
};

constexpr bool is_in_order() {
    for (size_t i = 0; i < std::size(texts); ++i) {
        if (texts[i].id != static_cast<Message>(i)) {
            return false;
        }
    }
    return std::size(texts) == static_cast<size_t>(Message::count);
}
static_assert(is_in_order());

struct ErrorMessage {
    std::errc error;
    Message id;
};

constexpr ErrorMessage error_messages[] = {
    {std::errc::no_such_file_or_directory, Message::not_found},
    {std::errc::not_a_directory, Message::not_found},
    {std::errc::no_such_device, Message::not_found},
    {std::errc::permission_denied, Message::permission_denied},
    {std::errc::operation_not_permitted, Message::permission_denied},
    {std::errc::filename_too_long, Message::path_too_long},
    {std::errc::is_a_directory, Message::is_directory},
    {std::errc::device_or_resource_busy, Message::is_in_use},
    {std::errc::too_many_symbolic_link_levels, Message::too_many_links},
    {std::errc::too_many_files_open, Message::too_many_open_files},
    {std::errc::too_many_files_open_in_system, Message::too_many_open_files},
    {std::errc::no_space_on_device, Message::no_space},
    {std::errc::read_only_file_system, Message::read_only},
    {std::errc::io_error, Message::input_output},
    {std::errc::not_enough_memory, Message::no_memory},
};

Language chosen = Language::english;

} // namespace

void set_language(Language language) {
    chosen = language;
}

std::string message(
    Message id, std::string_view first, std::string_view second, std::string_view third) {
    const std::string_view values[] = {first, second, third};
    const std::string_view text = texts[static_cast<size_t>(id)].text[static_cast<size_t>(chosen)];
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '{') {
            out += values[text[i + 1] - '1'];
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string error_text(const std::error_code& error) {
    for (const ErrorMessage& row : error_messages) {
        if (error == row.error) {
            return message(row.id);
        }
    }
    const bool is_told_in_english = error.category() == std::generic_category();
    return is_told_in_english && chosen == Language::english
               ? error.message()
               : message(Message::system_error, std::to_string(error.value()));
}

} // namespace host
