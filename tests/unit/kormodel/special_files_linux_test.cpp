// Model files that are no files: devices and pipes.
#include "kormodel/spin_system_file.h"

#include "model_set.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace kor;
using namespace kor_test;

TEST(SpinSystemFile, ADeviceWithoutAnEndIsRefused) {
    KORSpinSystemDef spins;
    EXPECT_EQ(outcome_of([&spins](char* message, std::size_t size) {
                  return kor_load_spin_system_text("/dev/zero", &spins, message, size);
              }),
              io_error("could not open spin system '/dev/zero'"));
}

// Nobody writes into these pipes: who opened one would wait for ever.
TEST(ModelFile, APipeIsNotWaitedFor) {
    const ModelSet set;
    const auto replace_by_pipe = [](const std::string& name) {
        std::filesystem::remove(name);
        ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
    };
    Model model;
    alarm(60); // ends a test that waits
    replace_by_pipe(set.sequence());
    EXPECT_EQ(load_model(set.model(), model),
              io_error("could not open pulse sequence '" + plain_name(set.root()) +
                       "/models/../sequences/test-gradient/test-gradient.korseq'"));
    replace_by_pipe(set.spin());
    EXPECT_EQ(load_model(set.model(), model),
              io_error("could not open spin system '" + plain_name(set.root()) +
                       "/models/../spin-systems/test-two-spin.korspin'"));
    replace_by_pipe(set.model());
    EXPECT_EQ(load_model(set.model(), model), io_error("could not open '" + set.model() + "' for reading"));
    alarm(0);
}
