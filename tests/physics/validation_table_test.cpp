// The tables of docs/validation.md name the closed forms' tests; every name must be one of this program's.
#include "support/build_paths.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

namespace {

std::set<std::string> registered_tests() {
    std::set<std::string> names;
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int s = 0; s < all.total_test_suite_count(); ++s) {
        const testing::TestSuite& suite = *all.GetTestSuite(s);
        for (int t = 0; t < suite.total_test_count(); ++t) {
            names.insert(std::string(suite.name()) + "." + suite.GetTestInfo(t)->name());
        }
    }
    return names;
}

/// Names in backquotes at the end of the table rows below the heading.
std::set<std::string> listed_tests() {
    const std::string page =
        kor_test::read_file(std::string(kor_test::source_folder()) + "/docs/validation.md");
    const std::size_t begin = page.find("### Closed forms");
    const std::string section = page.substr(begin, page.find("\n### ", begin + 1) - begin);
    const std::regex row("`([A-Za-z0-9]+\\.[A-Za-z0-9]+)` \\|\n");
    std::set<std::string> names;
    for (std::sregex_iterator it(section.begin(), section.end(), row); it != std::sregex_iterator(); ++it) {
        names.insert((*it)[1]);
    }
    return names;
}

} // namespace

TEST(ValidationTable, ListsAtLeastSixtyClosedFormsAllOfThemTested) {
    const std::set<std::string> registered = registered_tests();
    const std::set<std::string> listed = listed_tests();
    EXPECT_GE(listed.size(), 60U);
    for (const std::string& name : listed) {
        EXPECT_TRUE(registered.contains(name)) << name;
    }
}
