// The service statuses of docs/protocol.md against the texts of the code.

#include "docs/markdown_table.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace orvanta_tests {
namespace {

using vantu::orvanta::service_status_message;

std::map<int, std::string> documented_texts() {
    std::map<int, std::string> texts;
    for (const table_row& row : table_under(DOCS_FOLDER "/protocol.md", "## Service statuses")) {
        EXPECT_EQ(row.size(), 3U);
        if (row.front() != "any other") {
            texts[std::atoi(row.front().c_str())] = row.back();
        }
    }
    return texts;
}

TEST(protocol_document, has_the_text_of_every_service_status_and_no_other) {
    std::map<int, std::string> texts;
    for (int status = 0; status < 255; ++status) {
        const std::string text = service_status_message(static_cast<std::int8_t>(status));
        if (text != "undefined") {
            texts[status] = text;
        }
    }
    ASSERT_FALSE(texts.empty());
    EXPECT_THAT(documented_texts(), testing::ContainerEq(texts));
}

} // namespace
} // namespace orvanta_tests
