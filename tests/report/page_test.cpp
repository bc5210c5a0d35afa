// The page in a real browser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <fstream>

#include "platform/linux/base/unique_fd.h"
#include "report/report_page.h"
#include "tests/report/made_report.h"
#include "tests/support/browser.h"
#include "tests/support/command.h"
#include "tests/support/patience.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// A server that only waits.
class Listener {
  public:
    Listener() : socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        EXPECT_EQ(bind(socket.Get(), reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(listen(socket.Get(), 5), 0);
        EXPECT_EQ(getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
        port = ntohs(address.sin_port);
    }

    std::string Address() const { return "http://127.0.0.1:" + std::to_string(port) + '/'; }
    // Whether anything has come. A connection alone is none: the browser opens some before it asks the
    // policy.
    bool WasAsked() const {
        for (;;) {
            const host::UniqueFd connection(accept4(socket.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!connection) return false;
            const timeval patience{0, 300'000};
            setsockopt(connection.Get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
            char byte = 0;
            if (recv(connection.Get(), &byte, 1, 0) > 0) return true;
        }
    }

  private:
    host::UniqueFd socket;
    unsigned port = 0;
};

// Two thousand folders in a hundred, and names that want to be more than names.
std::vector<MadeRow> LargeTree() {
    const std::string own = "O:BAG:BAD:(D;;FW;;;BG)(A;OICIID;FA;;;BA)";
    std::vector<MadeRow> rows = {
        {"", TreeObjectKind::kFolder, "O:BAG:BAD:P(A;OICI;FA;;;BA)", {Remark::kProtected}}};
    rows.push_back({"<img src=x onerror=alert(1)>",
                    TreeObjectKind::kFile,
                    "O:BAG:BAD:P(A;;FA;;;WD)",
                    {Remark::kOpenToAll, Remark::kProtected}});
    rows.push_back({"<script>window.wasRun=1<!--", TreeObjectKind::kFile, own, {Remark::kDenial}});
    rows.push_back({"\xE2\x80\xA8\xFF&amp;\"'", TreeObjectKind::kFile, "", {Remark::kUnreadable}});
    for (int i = 100; i < 200; ++i)
        for (int k = 10; k < 30; ++k)
            rows.push_back({"d" + std::to_string(i) + "\\e" + std::to_string(k),
                            TreeObjectKind::kFolder,
                            own,
                            {Remark::kOwnEntries, Remark::kDenial}});
    return rows;
}

class PageTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<TemporaryFolder>();
        MadeReport made(LargeTree());
        made.AddAccount(nt::Sid(1, {0}), {nt::Sid(1, {0})});
        made.AddAccount(nt::Sid(5, {32, 546}), {nt::Sid(5, {32, 546}), nt::Sid(1, {0})});
        WrittenText output;
        ASSERT_EQ(WriteReportPage(made.Get(), output), 0U);
        std::ofstream(folder->Path("report.html")) << output.text;
        browser = std::make_unique<Browser>();
    }
    static void TearDownTestSuite() {
        browser.reset();
        folder.reset();
    }

    void SetUp() override {
        if (const std::string missing = MissingProgram("chromium"); !missing.empty()) GTEST_SKIP() << missing;
        ASSERT_EQ(browser->Problem(), "");
    }

    // The lines in sight, each as the texts of its cells.
    static std::vector<std::string> Lines() {
        return browser->Evaluate("[...document.querySelectorAll('#rows .line')].map(line => line.innerText)")
            .get<std::vector<std::string>>();
    }
    static std::string Count() {
        return browser->Evaluate("document.getElementById('count').textContent").get<std::string>();
    }
    static void Set(const std::string& id, const std::string& value) {
        browser->Evaluate("(() => { const control = document.getElementById('" + id +
                          "'); control.value = '" + value +
                          "'; control.dispatchEvent(new Event('input', {bubbles: true}));"
                          " control.dispatchEvent(new Event('change', {bubbles: true})); })()");
    }
    static void Click(const std::string& selector) {
        browser->Evaluate("document.querySelector('" + selector + "').click()");
    }

    static inline std::unique_ptr<TemporaryFolder> folder;
    static inline std::unique_ptr<Browser> browser;
};

TEST_F(PageTest, WithScriptsItIsATreeWithFilters) {
    browser->Open(folder->Path("report.html"));
    EXPECT_EQ(Count(), "2,004 of 2,004 objects");
    std::vector<std::string> lines = Lines();
    ASSERT_GE(lines.size(), 10U);
    EXPECT_LT(lines.size(), 80U);  // the others are not there
    EXPECT_THAT(lines[0], HasSubstr("/srv/data"));
    EXPECT_THAT(lines[1], HasSubstr("<img src=x onerror=alert(1)>"));
    EXPECT_THAT(lines[2], HasSubstr("<script>window.wasRun=1<!--"));
    EXPECT_THAT(lines[3], HasSubstr("\\u{2028}\\xff&amp;\"'"));
    EXPECT_THAT(lines[4], HasSubstr("d100/"));

    // A folder opens and closes, by mouse and by keyboard.
    Click("#line-4 .twist");
    EXPECT_THAT(Lines()[5], HasSubstr("e10/"));
    browser->Evaluate(
        "document.getElementById('rows').dispatchEvent(new KeyboardEvent('keydown', {key: 'ArrowLeft'}))");
    EXPECT_THAT(Lines()[5], HasSubstr("d101/"));

    Set("search", "D150/E2");
    EXPECT_EQ(Count(), "10 of 2,004 objects");
    lines = Lines();
    ASSERT_EQ(lines.size(), 12U);
    EXPECT_THAT(lines[2], HasSubstr("e20/"));
    EXPECT_THAT(lines[2], HasSubstr("Deny BUILTIN\\Guests"));
    Click("#clear");

    Set("account", "0");
    EXPECT_EQ(Count(), "1 of 2,004 objects");
    Set("account", "1");
    EXPECT_EQ(Count(), "2,001 of 2,004 objects");
    Set("reach", "write");
    EXPECT_EQ(Count(), "1 of 2,004 objects");
    Click("#clear");
    browser->Evaluate(
        "[...document.querySelectorAll('#remark-boxes label')].find(label => "
        "label.textContent.includes('unreadable')).firstElementChild.click()");
    EXPECT_EQ(Count(), "1 of 2,004 objects");
    Click("#clear");

    Set("view", "list");
    Click("[data-order=path] button");
    EXPECT_THAT(Lines()[0], HasSubstr("/srv/data/d199/e29/"));
    Click("[data-order=owner] button");
    EXPECT_THAT(Lines()[0], HasSubstr("\\u{2028}"));  // it has none
    browser->Evaluate("document.getElementById('rows').scrollTop = 1e9; new Promise(requestAnimationFrame)");
    EXPECT_THAT(Lines().back(), HasSubstr("/srv/data/d199/e29/"));
    Set("view", "tree");

    Set("search", "wasRun");
    Click("#line-1");
    EXPECT_THAT(browser->Evaluate("document.getElementById('details').innerText").get<std::string>(),
                HasSubstr("Deny\tBUILTIN\\Guests\tSpecial\tNot inherited\tThis folder only"));
    EXPECT_EQ(browser->Evaluate("typeof window.wasRun"), "undefined");
    EXPECT_THAT(browser->Requests(), ElementsAre(StartsWith("file://")));
    EXPECT_THAT(browser->Reports(), IsEmpty());
}

// Nothing leaves the page, whatever finds its way into it.
TEST_F(PageTest, ThePolicyLetsNothingOut) {
    const Listener listener;
    browser->Open(folder->Path("report.html"));
    const auto refused = browser->Evaluate(R"((async (address) => {
        const refused = [];
        document.addEventListener('securitypolicyviolation', event => refused.push(event.effectiveDirective));
        await fetch(address).catch(() => {});
        const added = (name, set) => document.body.append(Object.assign(document.createElement(name), set));
        added('img', {src: address});
        added('script', {textContent: 'window.wasRun = 1'});
        added('script', {src: address});
        added('style', {textContent: `body {background: url(${address})}`});
        added('iframe', {src: address});
        document.body.setAttribute('onclick', 'window.wasRun = 1');
        document.body.click();
        const form = Object.assign(document.createElement('form'), {action: address});
        document.body.append(form);
        form.submit();
        // They are reported when the browser comes to it.
        for (let i = 0; i < 100 && new Set(refused).size < 7; ++i)
            await new Promise(done => setTimeout(done, 100));
        return [...new Set(refused)].sort().join(' ') + ' ' + typeof window.wasRun;
    })(')" + listener.Address() + "')");
    EXPECT_EQ(
        refused,
        "connect-src form-action frame-src img-src script-src-attr script-src-elem style-src-elem undefined");
    EXPECT_FALSE(listener.WasAsked());

    // The same browser reaches it from a page without the policy.
    std::ofstream(folder->Path("other.html")) << "<!DOCTYPE html><title>other</title>";
    browser->Open(folder->Path("other.html"));
    EXPECT_TRUE(Await([&] {
        browser->Evaluate("fetch('" + listener.Address() +
                          "', {mode: 'no-cors', signal: AbortSignal.timeout(500)})"
                          ".catch(() => {})");
        return listener.WasAsked();
    }));
}

TEST_F(PageTest, WithoutScriptsItIsAPageOfTables) {
    browser->Open(folder->Path("report.html"), Browser::Scripts::kSwitchedOff);
    // The tools look at a page all the same.
    EXPECT_EQ(browser->Evaluate(
                  "document.querySelectorAll('noscript table:first-of-type tbody tr').length >= 2004"),
              true);
    EXPECT_EQ(browser->Evaluate("document.querySelector('noscript a').hash"), "#list-1");
    EXPECT_EQ(browser->Evaluate("document.querySelectorAll('img').length"), 0);
    EXPECT_EQ(browser->Evaluate("getComputedStyle(document.getElementById('explorer')).display"), "none");
    EXPECT_THAT(browser->Evaluate("document.querySelector('noscript').innerText").get<std::string>(),
                HasSubstr("<script>window.wasRun=1<!--"));
}

}  // namespace
}  // namespace permora::test
