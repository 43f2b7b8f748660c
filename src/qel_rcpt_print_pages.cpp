// Code pages of receipt printers, and what stands for a character that a page lacks.
#include "qel_rcpt_chars.hpp"
#include "qel_rcpt_print.hpp"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace
{

// The pages, made from Unicode's published mappings: the characters of the bytes 0x80 to 0xFF in
// order. U+FFFD where there is no character, or a control.

constexpr char16_t page_437[] = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
                                u"áíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";

constexpr char16_t page_850[] = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø×ƒ"
                                u"áíóúñÑªº¿®¬½¼¡«»░▒▓│┤ÁÂÀ©╣║╗╝¢¥┐"
                                u"└┴┬├─┼ãÃ╚╔╩╦╠═╬¤ðÐÊËÈıÍÎÏ┘┌█▄¦Ì▀"
                                u"ÓßÔÒõÕµþÞÚÛÙýÝ¯´\u00AD±‗¾¶§÷¸°¨·¹³²■\u00A0";

constexpr char16_t page_852[] = u"ÇüéâäůćçłëŐőîŹÄĆÉĹĺôöĽľŚśÖÜŤťŁ×č"
                                u"áíóúĄąŽžĘę¬źČş«»░▒▓│┤ÁÂĚŞ╣║╗╝Żż┐"
                                u"└┴┬├─┼Ăă╚╔╩╦╠═╬¤đĐĎËďŇÍÎě┘┌█▄ŢŮ▀"
                                u"ÓßÔŃńňŠšŔÚŕŰýÝţ´\u00AD˝˛ˇ˘§÷¸°¨˙űŘř■\u00A0";

constexpr char16_t page_858[] = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø×ƒ"
                                u"áíóúñÑªº¿®¬½¼¡«»░▒▓│┤ÁÂÀ©╣║╗╝¢¥┐"
                                u"└┴┬├─┼ãÃ╚╔╩╦╠═╬¤ðÐÊËÈ€ÍÎÏ┘┌█▄¦Ì▀"
                                u"ÓßÔÒõÕµþÞÚÛÙýÝ¯´\u00AD±‗¾¶§÷¸°¨·¹³²■\u00A0";

constexpr char16_t page_860[] = u"ÇüéâãàÁçêÊèÍÔìÃÂÉÀÈôõòÚùÌÕÜ¢£Ù₧Ó"
                                u"áíóúñÑªº¿Ò¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";

constexpr char16_t page_863[] = u"ÇüéâÂà¶çêëèïî‗À§ÉÈÊôËÏûù¤ÔÜ¢£ÙÛƒ"
                                u"¦´óú¨¸³¯Î⌐¬½¼¾«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";

constexpr char16_t page_865[] = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø₧ƒ"
                                u"áíóúñÑªº¿⌐¬½¼¡«¤░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";

constexpr char16_t page_866[] = u"АБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"
                                u"абвгдежзийклмноп░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                u"рстуфхцчшщъыьэюяЁёЄєЇїЎў°∙·√№¤■\u00A0";

constexpr char16_t page_1252[] = u"€\uFFFD‚ƒ„…†‡ˆ‰Š‹Œ\uFFFDŽ\uFFFD\uFFFD‘’“”•–—˜™š›œ\uFFFDžŸ"
                                 u"\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿"
                                 u"ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞß"
                                 u"àáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ";

constexpr char16_t page_iso8859_15[] =
    u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"
    u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"
    u"\uFFFD\uFFFD"
    u"\u00A0¡¢£€¥Š§š©ª«¬\u00AD®¯°±²³Žµ¶·ž¹º»ŒœŸ¿"
    u"ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞß"
    u"àáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ";

// Characters and what is nearest to them, in the order of the characters: a letter without its last
// accent, a sign of ASCII. What is nearest may be in this table again.
constexpr char16_t nearest_pairs[] =
    u"\u00A0 ¡!¢c£L¥Y¦|§S¨\"©Cªa«\"¬-\u00AD-®R¯-°º²2³3´'µu·.¸,¹1ºo»\"¿?ÀAÁAÂAÃAÄAÅAÆAÇCÈEÉE"
    u"ÊEËEÌIÍIÎIÏIÐDÑNÒOÓOÔOÕOÖO×xØOÙUÚUÛUÜUÝYÞTßsàaáaâaãaäaåaæaçcèeéeêeëeìiíiîiïiðdñnòoóoôo"
    u"õoöo÷/øoùuúuûuüuýyþtÿyĀAāaĂAăaĄAąaĆCćcĈCĉcĊCċcČCčcĎDďdĐDđdĒEēeĔEĕeĖEėeĘEęeĚEěeĜGĝgĞGğg"
    u"ĠGġgĢGģgĤHĥhĦHħhĨIĩiĪIīiĬIĭiĮIįiİIıiĴJĵjĶKķkĹLĺlĻLļlĽLľlŁLłlŃNńnŅNņnŇNňnŌOōoŎOŏoŐOőoŒO"
    u"œoŔRŕrŖRŗrŘRřrŚSśsŜSŝsŞSşsŠSšsŢTţtŤTťtŦTŧtŨUũuŪUūuŬUŭuŮUůuŰUűuŲUųuŴWŵwŶYŷyŸYŹZźzŻZżzŽZ"
    u"žzƒfƠOơoƯUưuǍAǎaǏIǐiǑOǒoǓUǔuǕÜǖüǗÜǘüǙÜǚüǛÜǜüǞÄǟäǠȦǡȧǢÆǣæǦGǧgǨKǩkǪOǫoǬǪǭǫǮƷǯʒǰjǴGǵgǸNǹn"
    u"ǺÅǻåǼÆǽæǾØǿøȀAȁaȂAȃaȄEȅeȆEȇeȈIȉiȊIȋiȌOȍoȎOȏoȐRȑrȒRȓrȔUȕuȖUȗuȘSșsȚTțtȞHȟhȦAȧaȨEȩeȪÖȫöȬÕ"
    u"ȭõȮOȯoȰȮȱȯȲYȳyʼ'ʹʹ;;΅¨ΆΑ··ΈΕΉΗΊΙΌΟΎΥΏΩΐϊΪΙΫΥάαέεήηίιΰϋϊιϋυόούυώωϓϒϔϒЀЕЁЕЃГЇІЌКЍИЎУЙИйи"
    u"ѐеёеѓгїіќкѝиўу\u1680 ḀAḁaḂBḃbḄBḅbḆBḇbḈÇḉçḊDḋdḌDḍdḎDḏdḐDḑdḒDḓdḔĒḕēḖĒḗēḘEḙeḚEḛeḜȨḝȩḞFḟf"
    u"ḠGḡgḢHḣhḤHḥhḦHḧhḨHḩhḪHḫhḬIḭiḮÏḯïḰKḱkḲKḳkḴKḵkḶLḷlḸḶḹḷḺLḻlḼLḽlḾMḿmṀMṁmṂMṃmṄNṅnṆNṇnṈNṉnṊN"
    u"ṋnṌÕṍõṎÕṏõṐŌṑōṒŌṓōṔPṕpṖPṗpṘRṙrṚRṛrṜṚṝṛṞRṟrṠSṡsṢSṣsṤŚṥśṦŠṧšṨṢṩṣṪTṫtṬTṭtṮTṯtṰTṱtṲUṳuṴUṵu"
    u"ṶUṷuṸŨṹũṺŪṻūṼVṽvṾVṿvẀWẁwẂWẃwẄWẅwẆWẇwẈWẉwẊXẋxẌXẍxẎYẏyẐZẑzẒZẓzẔZẕzẖhẗtẘwẙyẛſẞßẠAạaẢAảaẤÂ"
    u"ấâẦÂầâẨÂẩâẪÂẫâẬẠậạẮĂắăẰĂằăẲĂẳăẴĂẵăẶẠặạẸEẹeẺEẻeẼEẽeẾÊếêỀÊềêỂÊểêỄÊễêỆẸệẹỈIỉiỊIịiỌOọoỎOỏo"
    u"ỐÔốôỒÔồôỔÔổôỖÔỗôỘỌộọỚƠớơỜƠờơỞƠởơỠƠỡơỢƠợơỤUụuỦUủuỨƯứưỪƯừưỬƯửưỮƯữưỰƯựưỲYỳyỴYỵyỶYỷyỸYỹy"
    u"\u2000 \u2001 \u2002 \u2003 \u2004 \u2005 \u2006 \u2007 \u2008 \u2009 \u200A \u2010-"
    u"\u2011-\u2012-\u2013-\u2014-\u2015-‘'’'‚'‛'“\"”\"„\"‟\"•*….\u202F ‰%′'″\"‹<›>⁄/\u205F "
    u"€E№N\u2212-∙*●*\u3000 ";

constexpr char16_t no_character = 0xFFFD;
constexpr std::size_t upper_half = 128;

// A character and its byte.
struct page_entry {
    char16_t character;
    std::uint8_t byte;
};

using page_entries = std::array<page_entry, upper_half>;

consteval page_entries by_character(const char16_t (&characters)[upper_half + 1])
{
    page_entries entries{};
    for (std::size_t i = 0; i < upper_half; ++i)
        entries[i] = {characters[i], static_cast<std::uint8_t>(upper_half + i)};
    std::ranges::sort(entries, {}, &page_entry::character);
    return entries;
}

// A character and the one that is nearest to it.
struct nearest {
    char16_t character;
    char16_t near;
};

constexpr std::size_t nearest_count = std::size(nearest_pairs) / 2;

consteval std::array<nearest, nearest_count> make_nearest_table()
{
    std::array<nearest, nearest_count> table{};
    for (std::size_t i = 0; i < nearest_count; ++i)
        table[i] = {nearest_pairs[2 * i], nearest_pairs[2 * i + 1]};
    return table;
}

constexpr std::array<nearest, nearest_count> nearest_table = make_nearest_table();
static_assert(std::ranges::is_sorted(nearest_table, std::ranges::less_equal{},
                                     &nearest::character));

// The nearest character, or 0.
char32_t nearest_to(char32_t character)
{
    if (character >= 0xFF01 && character <= 0xFF5E) // the wide forms of ASCII
        return character - 0xFF01 + U'!';
    const auto place = static_cast<std::size_t>(
        std::ranges::lower_bound(nearest_table, character, {}, &nearest::character) -
        nearest_table.begin());
    const bool has_one =
        place < nearest_table.size() && nearest_table[place].character == character;
    return has_one ? nearest_table[place].near : 0;
}

// Marks on the character before, and signs that only direct the text: they take no room.
constexpr bool takes_no_room(char32_t character)
{
    struct range {
        char32_t first;
        char32_t last;
    };
    constexpr range ranges[] = {
        {0x0300, 0x036F}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x202A, 0x202E},
        {0x2060, 0x2064}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF},
    };
    return std::ranges::any_of(
        ranges, [&](const range &r) { return character >= r.first && character <= r.last; });
}

constexpr char unknown = '?';

} // namespace

class qel_rcpt::code_page
{
  public:
    Qel_rcpt_code_page_t id;
    page_entries entries;
    int escpos_number; // of the command that selects it; -1: none
    int star_number;

    // The page's byte, or 0 when it lacks the character.
    [[nodiscard]] char byte_of(char32_t character) const
    {
        if (character >= U' ' && character <= U'~')
            return static_cast<char>(character);
        if (character == no_character)
            return 0;
        const auto place = static_cast<std::size_t>(
            std::ranges::lower_bound(entries, character, {}, &page_entry::character) -
            entries.begin());
        const bool has_it = place < entries.size() && entries[place].character == character;
        return has_it ? static_cast<char>(entries[place].byte) : '\0';
    }

    // The byte of what is nearest to a character that the page lacks.
    [[nodiscard]] char byte_near(char32_t character) const
    {
        if (character >= '\t' && character <= '\r')
            return ' ';
        for (char32_t near = nearest_to(character); near != 0; near = nearest_to(near)) {
            if (const char byte = byte_of(near); byte != 0)
                return byte;
        }
        return unknown;
    }
};

namespace
{

using qel_rcpt::code_page;

// Numbers of Epson's and Star's manuals.
constexpr code_page pages[] = {
    {QEL_RCPT_CODE_PAGE_858, by_character(page_858), 19, 4}, // the default
    {QEL_RCPT_CODE_PAGE_437, by_character(page_437), 0, 1},
    {QEL_RCPT_CODE_PAGE_850, by_character(page_850), 2, -1},
    {QEL_RCPT_CODE_PAGE_852, by_character(page_852), 18, 5},
    {QEL_RCPT_CODE_PAGE_860, by_character(page_860), 3, 6},
    {QEL_RCPT_CODE_PAGE_863, by_character(page_863), 4, 8},
    {QEL_RCPT_CODE_PAGE_865, by_character(page_865), 5, 9},
    {QEL_RCPT_CODE_PAGE_866, by_character(page_866), 17, 10},
    {QEL_RCPT_CODE_PAGE_1252, by_character(page_1252), 16, 32},
    {QEL_RCPT_CODE_PAGE_ISO_8859_15, by_character(page_iso8859_15), 40, -1},
};

// Appends one character; returns whether it is another than the one given.
bool append_character(std::string &out, char32_t character, const code_page &page)
{
    if (const char byte = page.byte_of(character); byte != 0) {
        out += byte;
        return false;
    }
    if (!takes_no_room(character))
        out += page.byte_near(character);
    return true;
}

std::size_t append_valid(std::string &out, std::string_view line, const code_page &page)
{
    std::size_t replaced = 0;
    const char *at = line.data();
    const char *const end = at + line.size();
    while (at != end) {
        const char *const run = at;
        at += qel_rcpt::visible_prefix({at, end});
        out.append(run, at);
        if (at != end && append_character(out, utf8::unchecked::next(at), page))
            ++replaced;
    }
    return replaced;
}

} // namespace

const code_page *qel_rcpt::find_code_page(Qel_rcpt_code_page_t id)
{
    if (id == QEL_RCPT_CODE_PAGE_DEFAULT)
        return std::begin(pages);
    const auto *found = std::ranges::find(pages, id, &code_page::id);
    return found == std::end(pages) ? nullptr : found;
}

std::optional<std::uint8_t> qel_rcpt::code_page_number(const code_page &page,
                                                       Qel_rcpt_printer_lang_t lang)
{
    const int number =
        lang == QEL_RCPT_PRINTER_LANG_STARPRNT ? page.star_number : page.escpos_number;
    if (number < 0)
        return std::nullopt;
    return static_cast<std::uint8_t>(number);
}

std::size_t qel_rcpt::append_encoded(std::string &out, std::string_view line, const code_page &page)
{
    const std::size_t visible = qel_rcpt::visible_prefix(line);
    out.append(line, 0, visible);
    line.remove_prefix(visible);
    if (line.empty())
        return 0;
    if (utf8::is_valid(line.begin(), line.end()))
        return append_valid(out, line, page);
    std::string repaired; // U+FFFD for what is broken
    utf8::replace_invalid(line.begin(), line.end(), std::back_inserter(repaired));
    return append_valid(out, repaired, page);
}
