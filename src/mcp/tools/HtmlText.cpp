#include "mcp/tools/HtmlText.h"

#include "base/Text.h"
#include "mcp/tools/TextLines.h"

#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace ondrel::mcp::tools {

namespace {

// Messages of people and of newsletters stay far below both.
constexpr std::size_t longest = std::size_t{4} << 20; // bytes
constexpr std::size_t deepest = 512;                  // elements within each other

using Names = std::initializer_list<std::string_view>;

bool isOneOf(std::string_view name, Names names) {
  return std::ranges::find(names, name) != names.end();
}

bool isBlock(std::string_view name) {
  return isOneOf(name, {"address", "article", "aside",  "body",   "center",  "dd",      "details", "div",
                        "dl",      "dt",      "figure", "footer", "form",    "header",  "hr",      "li",
                        "main",    "nav",     "ol",     "option", "section", "summary", "table",   "tbody",
                        "tfoot",   "thead",   "tr",     "ul",     "caption"});
}

bool isParagraph(std::string_view name) {
  return isOneOf(name, {"p", "h1", "h2", "h3", "h4", "h5", "h6", "pre", "blockquote"});
}

bool isNeverShown(std::string_view name) {
  return isOneOf(name, {"head", "title", "script", "style", "template", "object", "iframe", "select"});
}

std::string_view attribute(const xmlChar** attributes, std::string_view name) {
  for (; attributes && attributes[0]; attributes += 2)
    if (name == reinterpret_cast<const char*>(attributes[0]))
      return attributes[1] ? reinterpret_cast<const char*>(attributes[1]) : "";
  return {};
}

bool has(const xmlChar** attributes, std::string_view name) {
  for (; attributes && attributes[0]; attributes += 2)
    if (name == reinterpret_cast<const char*>(attributes[0]))
      return true;
  return false;
}

bool isHidden(const xmlChar** attributes) {
  auto style = base::lowercasedAscii(attribute(attributes, "style"));
  std::erase(style, ' ');
  return has(attributes, "hidden") || style.contains("display:none") || style.contains("visibility:hidden");
}

std::string linkTarget(const xmlChar** attributes) {
  const auto address = base::displayLine(base::trimmed(attribute(attributes, "href")));
  const auto scheme = base::lowercasedAscii(std::string_view(address).substr(0, address.find(':')));
  return isOneOf(scheme, {"http", "https", "mailto", "tel"}) ? address : std::string();
}

// Takes the parser's events; there is no tree.
class Converter {
 public:
  explicit Converter(htmlParserCtxt& parser) : parser_(parser) {}

  void begin(std::string_view name, const xmlChar** attributes) {
    auto& element = open_.emplace_back();
    // The parser walks through all of them for a closing tag that fits none.
    if (open_.size() > deepest)
      xmlStopParser(&parser_);
    element.isSkipped = isSkipping() || isNeverShown(name) || isHidden(attributes);
    skipped_ += element.isSkipped ? 1 : 0;
    if (element.isSkipped)
      return;
    if (name == "br")
      lines_.breakLine();
    else if (isBlock(name))
      lines_.startLine();
    else if (isParagraph(name))
      lines_.startParagraph();
    else if (name == "td" || name == "th")
      lines_.startCell();
    if (name == "li")
      lines_.addMark("- ");
    else if (name == "pre")
      lines_.enterPreformatted();
    else if (name == "blockquote")
      lines_.enterQuote();
    else if (name == "img")
      lines_.add(attribute(attributes, "alt"));
    else if (name == "a") {
      element.link = linkTarget(attributes);
      element.textBegan = lines_.size();
    }
  }

  void end(std::string_view name) {
    if (open_.empty())
      return;
    const auto element = std::move(open_.back());
    open_.pop_back();
    if (element.isSkipped) {
      --skipped_;
      return;
    }
    if (!element.link.empty() && lines_.since(element.textBegan) != element.link)
      lines_.add(" <" + element.link + ">");
    if (name == "pre")
      lines_.leavePreformatted();
    else if (name == "blockquote")
      lines_.leaveQuote();
    if (isBlock(name))
      lines_.startLine();
    else if (isParagraph(name))
      lines_.startParagraph();
  }

  void text(std::string_view text) {
    if (!isSkipping())
      lines_.add(text);
  }

  std::string result() && { return std::move(lines_).text(); }

 private:
  struct Element {
    bool isSkipped = false;
    std::string link;
    std::size_t textBegan = 0;
  };

  bool isSkipping() const { return skipped_ > 0; }

  htmlParserCtxt& parser_;
  TextLines lines_;
  std::vector<Element> open_;
  std::size_t skipped_ = 0; // of the open ones
};

std::string_view viewOf(const xmlChar* name) {
  return reinterpret_cast<const char*>(name);
}

htmlSAXHandler handler() {
  htmlSAXHandler result{};
  result.startElement = [](void* converter, const xmlChar* name, const xmlChar** attributes) {
    static_cast<Converter*>(converter)->begin(viewOf(name), attributes);
  };
  result.endElement = [](void* converter, const xmlChar* name) {
    static_cast<Converter*>(converter)->end(viewOf(name));
  };
  result.characters = [](void* converter, const xmlChar* text, int length) {
    static_cast<Converter*>(converter)->text(
        {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
  };
  result.ignorableWhitespace = result.characters;
  // Of scripts and styles; not given: it is left out.
  return result;
}

} // namespace

std::string textOfHtml(std::string_view html) {
  html = html.substr(0, longest);
  const std::unique_ptr<htmlParserCtxt, decltype(&htmlFreeParserCtxt)> parser(
      htmlCreateMemoryParserCtxt(html.data(), static_cast<int>(html.size())), htmlFreeParserCtxt);
  if (!parser)
    return {};
  htmlCtxtUseOptions(parser.get(), HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                                       HTML_PARSE_NONET | HTML_PARSE_IGNORE_ENC);
  xmlSwitchEncoding(parser.get(), XML_CHAR_ENCODING_UTF8);
  Converter converter(*parser);
  *parser->sax = handler();
  parser->userData = &converter;
  htmlParseDocument(parser.get());
  return std::move(converter).result();
}

} // namespace ondrel::mcp::tools
