#include "pulsesequencedefiner/editor_actions.h"

#include "consoleutil.h"
#include "kor/runtime_state.h"
#include "kormodel/text_lines.h"
#include "pulsesequencedefiner/prompts.h"
#include "pulsesequencedefiner_state.h"

#include <cstdio>
#include <cstring>

namespace kor {

int define_chosen_sector(DefineSector define_sector) {
    int k = 0;
    if (!read_int_prompt("Sector number to define / edit = ", &k))
        return 0;
    if (k < 1 || k > KOR_MAX_SECTORS) {
        std::printf("Invalid sector number. Allowed range is 1..%d.\n", KOR_MAX_SECTORS);
        return 1;
    }
    g_runtime.sector = k;
    if (!define_sector(k))
        return 0;
    count_edited_sector(k);
    return 1;
}

int define_result_file() {
    char name[KOR_FILE_NAME_SIZE];
    if (!read_trimmed_line_prompt("File name to store results in : ", name, sizeof name))
        return 0;
    std::memcpy(g_runtime.resultflnm, name, sizeof name);
    return 1;
}

int ask_sector_offset(int k) {
    return read_double_prompt("Static offset frequency [Hz] : ", &g_runtime.statoff[k]);
}

int ask_sector_note(int k) {
    if (!read_line_prompt("Sector note (optional): ", g_runtime.remarks[k], KOR_REMARK_SIZE))
        return console_resume_after_end();
    if (find_lost_in_text(g_runtime.remarks[k]))
        std::puts("A model with '#' in a note cannot be saved: the rest of the line would be a comment.");
    return 1;
}

void print_sector_header(const char* family, int k) {
    std::printf("\n"
                "========================================\n"
                " Edit %s Sequence Sector %d\n"
                "========================================\n"
                "\n",
                family, k);
}

} // namespace kor
