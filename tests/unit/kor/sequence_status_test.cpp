#include "kor/sequence_status.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/run_models.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kor {
namespace {

using kor_test::Sector;

std::string status() {
    return kor_test::play_console("", PrintNonInteractiveStatus).out;
}

/// The run-status line of the status block.
std::string verdict() {
    const std::string text = status();
    const std::size_t start = text.find("  run status       : ");
    return start == std::string::npos ? "" : text.substr(start + 21, text.find('\n', start) - start - 21);
}

void ready_sequence(int family) {
    kor_test::forget_model();
    kor_test::define_spins({1, 1}, {1, 1}, {0, 0}, {0}, true);
    Sector sector;
    sector.file = "w";
    kor_test::define_sequence(family, {sector, sector, sector}, "");
    kor_test::define_grid(2, 3, 4, 0, 0, 0, 0, 0, 0);
}

TEST(SequenceLabels, NameEveryType) {
    EXPECT_STREQ(SequenceTypeLabel(0), "<unset>");
    EXPECT_STREQ(SequenceTypeLabel(1), "spatial resolved");
    EXPECT_STREQ(SequenceTypeLabel(2), "1D/2D NMR");
    EXPECT_STREQ(SequenceTypeLabel(3), "<unknown>");
    EXPECT_STREQ(SequenceTypeLabel(-1), "<unknown>");
    const char* const sectors[] = {"<unset>",
                                   "hard pulse",
                                   "AM pulse",
                                   "FM / adiabatic pulse",
                                   "pulse file Bx/By",
                                   "pulse file Bx/Bz",
                                   "waiting time / free precession"};
    for (int type = 0; type <= 6; ++type) {
        EXPECT_STREQ(SectorTypeLabel(type), sectors[type]);
    }
    EXPECT_STREQ(SectorTypeLabel(7), "<unknown>");
    EXPECT_STREQ(SectorTypeLabel(-1), "<unknown>");
}

TEST(PrintNonInteractiveStatus, OfAnEmptyModelListsWhatIsNotThere) {
    kor_test::forget_model();
    g_runtime.sequencetype = 0;
    EXPECT_EQ(status(), "Current model state:\n"
                        "  Nspins           : 0\n"
                        "  sequence family  : <unset>\n"
                        "  sequence sectors : 0\n"
                        "  result file      : <unset>\n"
                        "  run status       : incomplete (spin system missing)\n"
                        "  spin system      : <none prepared>\n"
                        "  pulse sequence   : <none prepared>\n"
                        "\n");
}

TEST(PrintNonInteractiveStatus, OfAReadySpatialModel) {
    ready_sequence(1);
    g_runtime.sectype[1] = 4;
    EXPECT_EQ(status(), "Current model state:\n"
                        "  Nspins           : 2\n"
                        "  sequence family  : spatial resolved (1)\n"
                        "  sequence sectors : 3\n"
                        "  first sector     : pulse file Bx/By (4)\n"
                        "  result file      : <unset>\n"
                        "  run status       : ready\n"
                        "\n");
}

TEST(PrintNonInteractiveStatus, OfAReadyNmrModel) {
    ready_sequence(2);
    g_runtime.sectype[1] = 2;
    std::snprintf(g_runtime.resultflnm, sizeof g_runtime.resultflnm, "out/fid.bin");
    EXPECT_EQ(status(), "Current model state:\n"
                        "  Nspins           : 2\n"
                        "  sequence family  : 1D/2D NMR (2)\n"
                        "  sequence sectors : 3\n"
                        "  first sector     : evolution sector (2)\n"
                        "  result file      : out/fid.bin\n"
                        "  run status       : ready\n"
                        "\n");
}

TEST(PrintNonInteractiveStatus, FirstSectorLineUsesTheLabelsOfTheFamily) {
    const struct {
        int family, type;
        const char* line;
    } cases[] = {
        {2, 0, "  first sector     : <unset>\n"},       {2, 1, "  first sector     : normal sector (1)\n"},
        {2, 3, "  first sector     : <unknown> (3)\n"}, {2, -1, "  first sector     : <unknown>\n"},
        {1, 0, "  first sector     : <unset>\n"},       {1, 1, "  first sector     : hard pulse (1)\n"},
        {1, 9, "  first sector     : <unknown> (9)\n"}, {0, 2, "  first sector     : AM pulse (2)\n"}};
    for (const auto& c : cases) {
        ready_sequence(c.family);
        g_runtime.sectype[1] = c.type;
        EXPECT_NE(status().find(c.line), std::string::npos) << c.line << status();
    }
}

TEST(PrintNonInteractiveStatus, NamesTheFirstThingThatIsMissing) {
    ready_sequence(2);
    g_runtime.nos = 0;
    EXPECT_EQ(verdict(), "incomplete (sequence sectors missing)");
    g_runtime.nos = 3;
    g_runtime.sectorset = 0;
    EXPECT_EQ(verdict(), "incomplete (sequence sectors missing)");
    g_runtime.sequencetype = 0;
    EXPECT_EQ(verdict(), "incomplete (sequence family not selected)");
    g_runtime.sequencetype = -1;
    EXPECT_EQ(verdict(), "incomplete (sequence family not selected)");
    g_runtime.systemset = 0;
    EXPECT_EQ(verdict(), "incomplete (spin system missing)");
    g_runtime.systemset = 1;
    g_runtime.Nspins = 0;
    EXPECT_EQ(verdict(), "incomplete (spin system missing)");
}

TEST(PrintNonInteractiveStatus, NamesTheFirstIncompleteSectorOfTheSpatialFamily) {
    ready_sequence(1);
    g_runtime.noti[3] = 0;
    EXPECT_NE(status().find("  run status       : incomplete (sector 3 is incomplete)\n"), std::string::npos);
    g_runtime.fnames[2][0] = '\0';
    EXPECT_EQ(verdict(), "incomplete (sector 2 is incomplete)");
    g_runtime.statoff[1] = std::nan("");
    EXPECT_EQ(verdict(), "incomplete (sector 1 is incomplete)");
    ready_sequence(1);
    g_runtime.sectype[1] = 0;
    g_runtime.nevo[1] = 0;
    EXPECT_EQ(verdict(), "ready");
}

TEST(PrintNonInteractiveStatus, NamesTheFirstIncompleteSectorOfTheNmrFamily) {
    ready_sequence(2);
    g_runtime.sectype[3] = 3;
    EXPECT_EQ(verdict(), "incomplete (sector 3 is incomplete)");
    g_runtime.nevo[2] = 0;
    EXPECT_EQ(verdict(), "incomplete (sector 2 is incomplete)");
    g_runtime.sectype[1] = 0;
    EXPECT_EQ(verdict(), "incomplete (sector 1 is incomplete)");
    ready_sequence(2);
    g_runtime.statoff[1] = std::nan("");
    g_runtime.ndx = 0;
    g_runtime.offsetset = 0;
    EXPECT_EQ(verdict(), "ready");
}

TEST(PrintNonInteractiveStatus, SpatialFamilyNeedsItsGrid) {
    for (int* axis : {&g_runtime.ndx, &g_runtime.ndy, &g_runtime.ndz}) {
        ready_sequence(1);
        *axis = 0;
        EXPECT_EQ(verdict(), "incomplete (spatial grid missing)");
    }
    ready_sequence(1);
    g_runtime.offsetset = 0;
    EXPECT_EQ(verdict(), "incomplete (spatial grid missing)");
}

TEST(PrintNonInteractiveStatus, UnknownFamilyIsToldBehindItsSectors) {
    ready_sequence(3);
    EXPECT_EQ(verdict(), "incomplete (unknown sequence family)");
    g_runtime.noti[2] = 0;
    EXPECT_EQ(verdict(), "incomplete (sector 2 is incomplete)");
}

} // namespace
} // namespace kor
