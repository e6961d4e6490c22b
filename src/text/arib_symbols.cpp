#include "text/arib_symbols.h"

namespace zat {

namespace {

struct Run {
    uint8_t row;
    uint8_t first_cell;
    std::string_view symbols; // one for each cell, a blank between two
};

// Kanji that code page 932 lacks, and symbols without a form in it, show as the geta mark.
constexpr Run runs[] = {
    // clang-format off
    {85, 1,
        "〓 〓 〓 〓 侚 俉 〓 〓 〓 〓 匇 〓 〓 詹 〓 〓 〓 咜 咩 〓 〓 〓 〓 〓 〓 塚 "
        "〓 〓 〓 〓 寬 﨑 〓 〓 弴 彅 德 〓 恵 愰 昤 〓 曙 曺 曻 桒 〓 〓 〓 〓 〓 櫛 "
        "〓 〓 〓 〓 〓 〓 海 〓 〓 淸 渚 〓 〓 〓 〓 〓 煇 燁 〓 〓 〓 珉 珖 〓 〓 琢 "
        "琦 琪 〓 〓 〓 〓 〓 〓 〓 〓 〓 〓 祇 禮 〓 〓"},
    {86, 1,
        "〓 〓 〓 〓 〓 〓 〓 羡 〓 〓 〓 〓 葛 蓜 蓬 蕙 〓 蝕 蝉 〓 裵 角 諶 〓 辻 〓 〓 "
        "鄧 鄭 〓 〓 銈 錡 鍈 閒 鶏 餃 〓 髙 鯖 鴎 麹 麺"},
    {90, 16,
        "[P] [P]"},
    {90, 45,
        "10. 11. 12. [HV] [SD] [P] [W] [MV] [手] [字] [双] [デ] [S] [二] [多] [解] [SS] "
        "[B] [N] ■ ● [天] [交] [映] [無] [料] [鍵] [前] [後] [再] [新] [初] [終] [生] "
        "[販] [声] [吹] [PPV] (秘) ほか"},
    {91, 6,
        "× (火) 〒"},
    {91, 10,
        "(文) (幼)"},
    {91, 13,
        "卍"},
    {91, 29,
        "(H) (D) (S)"},
    {91, 33,
        "(P) [IC] [SA] [PA] [J]"},
    {91, 42,
        "[L] ℡"},
    {91, 48,
        "[M]"},
    {92, 1,
        "→ ← ↑ ↓ ○ ● 年 月 日 円 ㎡ m3 ㎝ cm2 cm3 0. 1. 2. 3. 4. 5. 6. 7. 8. 9. 氏 "
        "副 元 故 前 [新] 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, (社) (財) (有) (株) (代) (問) ＞ "
        "＜ 【 】 ◇ ^2 ^3 (CD) (vn) (ob) (cb) (ce mb) (hp) (br) (p) (s) (ms) (t) (bs) "
        "(b) (tb) (tp) (ds) (ag) (eg) (vo) (fl) (ke y) (sa x) (sy n) (or g) (pe r) (R) "
        "(C) (箏) DJ [演] Fax"},
    {93, 1,
        "(月) (火) (水) (木) (金) (土) (日) (祝) ㍾ ㍽ ㍼ ㍻ № ℡ (〒) ○ [本] [三] "
        "[二] [安] [点] [打] [盗] [勝] [敗] [S] [投] [捕] [一] [二] [三] [遊] [左] [中] "
        "[右] [指] [走] [打] ㍑ ㎏ Hz ha ㎞ km2 hPa"},
    {93, 48,
        "1/2 0/3 1/3 2/3 1/4 3/4 1/5 2/5 3/5 4/5 1/6 5/6 1/7 1/8 1/9 1/10 (晴) (曇) (雨) "
        "(雪) △ ▲ ▽ ▼ ◆ ・ ・ ・ ◇ ◎ !! !? (曇/晴) (雨) (雨) (雪) (大雪) (雷) "
        "(雷雨)"},
    {93, 88,
        "・ ・ ♪ ℡"},
    {94, 1,
        "Ⅰ Ⅱ Ⅲ Ⅳ Ⅴ Ⅵ Ⅶ Ⅷ Ⅸ Ⅹ XI XII ⑰ ⑱ ⑲ ⑳ (1) (2) (3) (4) (5) (6) (7) "
        "(8) (9) (10) (11) (12) (21) (22) (23) (24) (A) (B) (C) (D) (E) (F) (G) (H) (I) "
        "(J) (K) (L) (M) (N) (O) (P) (Q) (R) (S) (T) (U) (V) (W) (X) (Y) (Z) (25) (26) "
        "(27) (28) (29) (30) ① ② ③ ④ ⑤ ⑥ ⑦ ⑧ ⑨ ⑩ ⑪ ⑫ ⑬ ⑭ ⑮ ⑯ ① ② ③ ④ "
        "⑤ ⑥ ⑦ ⑧ ⑨ ⑩ ⑪ ⑫ (31)"},
    // clang-format on
};

} // namespace

std::string_view arib_symbol(uint32_t row, uint32_t cell) {
    for (const Run& run : runs) {
        if (run.row != row || cell < run.first_cell) {
            continue;
        }
        std::string_view rest = run.symbols;
        for (uint32_t i = run.first_cell; i < cell && !rest.empty(); ++i) {
            const size_t blank = rest.find(' ');
            rest.remove_prefix(blank == std::string_view::npos ? rest.size() : blank + 1);
        }
        if (!rest.empty()) {
            return rest.substr(0, rest.find(' '));
        }
    }
    return {};
}

} // namespace zat
