#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"

#include "support/run_models.h"

#include <gtest/gtest.h>

#include <climits>

namespace kor {
namespace {

using kor_test::Sector;

TEST(ContainsIgnoringCase, FoldsTheAsciiLettersOnly) {
    EXPECT_EQ(kor_text_contains_ci("Start ADC", "adc"), 1);
    EXPECT_EQ(kor_text_contains_ci("start adc", "ADC"), 1);
    EXPECT_EQ(kor_text_contains_ci("aAdDc", "adc"), 0);
    EXPECT_EQ(kor_text_contains_ci("aaadc", "aadc"), 1);
    EXPECT_EQ(kor_text_contains_ci("ad", "adc"), 0);
    EXPECT_EQ(kor_text_contains_ci("@[`{", "@[`{"), 1);
    EXPECT_EQ(kor_text_contains_ci("@", "`"), 0);
    EXPECT_EQ(kor_text_contains_ci("[", "{"), 0);
    EXPECT_EQ(kor_text_contains_ci("\xc3\x84", "\xc3\xa4"), 0);
    EXPECT_EQ(kor_text_contains_ci("Z", "z"), 1);
}

TEST(ContainsIgnoringCase, EmptyNeedleIsEverywhereAndNothingIsInNothing) {
    EXPECT_EQ(kor_text_contains_ci("text", ""), 1);
    EXPECT_EQ(kor_text_contains_ci("", ""), 1);
    EXPECT_EQ(kor_text_contains_ci("", "a"), 0);
    EXPECT_EQ(kor_text_contains_ci(nullptr, "a"), 0);
    EXPECT_EQ(kor_text_contains_ci("text", nullptr), 0);
    EXPECT_EQ(kor_text_contains_ci(nullptr, ""), 0);
}

TEST(AcquisitionRemark, ContainsAdcOrAcquisitionInAnyCase) {
    for (const char* remark :
         {"adc", "Start ADC", "my Acquisition", "acquisition_frequency 3", "preadcpost"}) {
        EXPECT_EQ(kor_is_acquisition_remark(remark), 1) << remark;
    }
    for (const char* remark : {"", "acq", "acquisitio", "a dc", "excitation"}) {
        EXPECT_EQ(kor_is_acquisition_remark(remark), 0) << remark;
    }
    EXPECT_EQ(kor_is_acquisition_remark(nullptr), 0);
}

TEST(PowerOfTwo, IsOneTimesTwosOnly) {
    for (int v = -4; v <= 4096; ++v) {
        int reached = 1;
        while (reached < v) {
            reached *= 2;
        }
        EXPECT_EQ(kor_is_power_of_two_int(v), v >= 1 && reached == v ? 1 : 0) << v;
    }
    EXPECT_EQ(kor_is_power_of_two_int(1 << 30), 1);
    EXPECT_EQ(kor_is_power_of_two_int(INT_MAX), 0);
    EXPECT_EQ(kor_is_power_of_two_int(INT_MIN), 0);
}

int is_pulse_acquire(const std::vector<Sector>& sectors) {
    kor_test::forget_model();
    kor_test::define_sequence(2, sectors, "");
    return kor_current_sequence_is_pulse_acquire_fid();
}

Sector remarked_sector(int type, const std::string& remark) {
    Sector s;
    s.type = type;
    s.remark = remark;
    return s;
}

TEST(PulseAcquire, IsAPlainPulseAndAPlainAcquisition) {
    EXPECT_EQ(is_pulse_acquire({remarked_sector(1, "pulse"), remarked_sector(1, "ADC")}), 1);
    EXPECT_EQ(is_pulse_acquire({remarked_sector(1, ""), remarked_sector(1, "acquisition")}), 1);
    EXPECT_EQ(is_pulse_acquire({remarked_sector(1, "adc"), remarked_sector(1, "ADC")}), 0);
    EXPECT_EQ(is_pulse_acquire({remarked_sector(1, "pulse"), remarked_sector(1, "delay")}), 0);
    EXPECT_EQ(is_pulse_acquire({remarked_sector(2, "pulse"), remarked_sector(1, "ADC")}), 0);
    EXPECT_EQ(is_pulse_acquire({remarked_sector(1, "pulse"), remarked_sector(2, "ADC")}), 0);
    EXPECT_EQ(is_pulse_acquire({remarked_sector(1, "ADC")}), 0);
    EXPECT_EQ(
        is_pulse_acquire({remarked_sector(1, "pulse"), remarked_sector(1, "ADC"), remarked_sector(1, "ADC")}),
        0);
}

} // namespace
} // namespace kor
