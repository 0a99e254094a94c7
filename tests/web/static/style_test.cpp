// SPDX-License-Identifier: Apache-2.0
#include <tests/web/static/static_fixture.h>

namespace {

class Style : public cStaticFixture {
 protected:
  static constexpr const char* kBody = R"(
    <h1>Meters</h1><p class='note error'>RS485-1 does not answer</p>
    <ul class='cards'><li class='card'><h2>0A015441560000000001</h2><p class='reading'><span class='value'>4711.5</span>
    <span class='unit'>Wh</span></p><p class='when'>12:00</p><span class='state ok'>ok</span></li></ul>
    <div class='table-wrap'><table><thead><tr><th scope='col'>Meter</th><th scope='col' class='num'>Value</th><th scope='col'>
    When</th></tr></thead><tbody><tr><th scope='row'>0A015441560000000001</th><td class='num'>1234567.5</td>
    <td class='when'>2026-11-21T15:01:54+00:00</td></tr></tbody></table></div>
    <form><div class='field'><label for='n'>Name</label><input id='n'><p class='hint'>As it stands on the meter.</p></div>
    <p class='actions'><button>Save</button><button class='danger'>Remove</button></p></form>
    <pre class='code'>1B 1B 1B 1B 01 01 01 01 76 05 00 00 00 01 62 00 62 00 72 63 01 01 76 01</pre>)";

  // Of the text of an element against what lies behind it, as WCAG 2 counts it.
  double Contrast(const std::string& css) {
    return m_browser->Execute(R"(
      const rgb = (text) => text.match(/[\d.]+/g).map(Number);
      const light = (text) => { const [r, g, b] = rgb(text).map((c) => c / 255).map(
          (c) => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4); return 0.2126 * r + 0.7152 * g + 0.0722 * b; };
      let element = document.querySelector(arguments[0]);
      const text = light(getComputedStyle(element).color);
      while (rgb(getComputedStyle(element).backgroundColor)[3] === 0) element = element.parentElement;
      const behind = light(getComputedStyle(element).backgroundColor);
      return (Math.max(text, behind) + 0.05) / (Math.min(text, behind) + 0.05);)",
                              {css});
  }
};

}  // namespace

TEST_F(Style, NeverScrollsThePageSideways) {
  Show(kBody);
  for (const unsigned int width : {320u, 480u, 768u, 1280u}) {
    m_browser->SetWindow(width, 800);
    EXPECT_TRUE(m_browser->Execute("return document.documentElement.scrollWidth <= innerWidth").get<bool>()) << width;
  }
  m_browser->SetWindow(320, 800);
  EXPECT_TRUE(m_browser
                  ->Execute("const wrap = document.querySelector('.table-wrap'); return wrap.scrollWidth > "
                            "wrap.clientWidth")
                  .get<bool>())
      << "tables scroll inside";
}

TEST_F(Style, PutsLabelsAboveFieldsOnPhonesOnly) {
  Show(kBody);
  const std::string above =
      "const y = (css) => document.querySelector(css).getBoundingClientRect();"
      "return y('.field label').bottom <= y('.field input').top";
  EXPECT_FALSE(m_browser->Execute(above).get<bool>());
  m_browser->SetWindow(320, 800);
  EXPECT_TRUE(m_browser->Execute(above).get<bool>());
}

TEST_F(Style, CanBeReadInLightAndDark) {
  Show(kBody);
  for (const char* scheme : {"light", "dark"}) {
    m_browser->SetMedia("prefers-color-scheme", scheme);
    for (const char* css : {"h1", ".note", ".card h2", ".unit", ".when", ".state", "thead th", "td.num", ".hint",
                            "button", "button.danger", "pre"})
      EXPECT_GE(Contrast(css), 4.5) << css << " " << scheme;
  }
}
