#include "ftp/engine/lanes.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

FileToMove Up(const std::string& remote) {
    return {.up = true, .remote = remote, .local_path = "/home/anna/" + remote, .label = {}, .mode = {}};
}
FileToMove Down(const std::string& local_path) {
    return {.up = false, .remote = "/page.htm", .local_path = local_path, .label = {}, .mode = {}};
}

TEST(OneTarget, IsANameOnTheServerOrAPathHere) {
    EXPECT_TRUE(HaveOneTarget(Up("/a/index.htm"), Up("/a/index.htm")));
    EXPECT_FALSE(HaveOneTarget(Up("/a/index.htm"), Up("/b/index.htm")));
    EXPECT_TRUE(HaveOneTarget(Up("/a/index.htm"), Up("index.htm"))) << "it may be";
    EXPECT_TRUE(HaveOneTarget(Up("index.htm"), Up("index.htm")));
    EXPECT_FALSE(HaveOneTarget(Up("/a/index.htm"), Up("page.htm")));
    EXPECT_TRUE(HaveOneTarget(Down("/x/page.htm"), Down("/x/page.htm")));
    EXPECT_FALSE(HaveOneTarget(Down("/x/page.htm"), Down("/y/page.htm")));
    EXPECT_FALSE(HaveOneTarget(Down("/x/page.htm"), Up("/page.htm")));
}

}  // namespace
}  // namespace ftp
