#include "devhost/xml/XmlParser.h"

#include <expat.h>

#include <algorithm>
#include <climits>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace devhost {
namespace {

// As many as a large project and its states have. An element takes many times its size in the text.
constexpr std::size_t kMostElements = 1000000;
constexpr std::size_t kMostAttributes = 4000000;

constexpr char kBadCharacter[] = "a character that XML does not allow, or that is not UTF-8";
constexpr char kBadReference[] = "\"&\" begins no known reference; write \"&amp;\" for the character itself";

std::string TooMany(std::size_t most, const char* what) {
  return "more than " + std::to_string(most) + " " + what + "; allowed: at most this many";
}

// Hands what the library finds to a builder. Nothing is thrown through the library: what a call of it throws ends the
// parsing, and is thrown again behind it.
class Parse {
 public:
  Parse(const std::string& text, XmlBuilder& builder)
      : m_text(text), m_builder(builder), m_parser(XML_ParserCreate("UTF-8")) {
    if (m_parser == nullptr) {
      throw std::bad_alloc();
    }
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), OnOpen, OnClose);
    XML_SetCharacterDataHandler(m_parser.get(), OnText);
    XML_SetCdataSectionHandler(m_parser.get(), OnCharacterData, OnBreak);
    XML_SetCommentHandler(m_parser.get(), [](void* parse, const XML_Char*) { OnBreak(parse); });
    XML_SetProcessingInstructionHandler(m_parser.get(),
                                        [](void* parse, const XML_Char*, const XML_Char*) { OnBreak(parse); });
    XML_SetStartDoctypeDeclHandler(m_parser.get(), OnDocumentType);
  }

  void Run() {
    // The library would read UTF-16.
    if (m_text.compare(0, 2, "\xFF\xFE") == 0 || m_text.compare(0, 2, "\xFE\xFF") == 0) {
      throw XmlError(kBadCharacter, 1, 1);
    }
    if (m_text.size() > INT_MAX) {
      throw XmlError("more than " + std::to_string(INT_MAX) + " bytes", 1, 1);
    }
    const XML_Status status = XML_Parse(m_parser.get(), m_text.data(), static_cast<int>(m_text.size()), XML_TRUE);
    if (m_thrown != nullptr) {
      std::rethrow_exception(m_thrown);
    }
    if (status != XML_STATUS_OK) {
      Explain();
    }
  }

 private:
  struct Free {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  template <class Body>
  static void Guard(void* data, Body body) {
    Parse& parse = *static_cast<Parse*>(data);
    if (parse.m_thrown != nullptr) {
      return;  // the library may go on to the end of the tag
    }
    try {
      body(parse);
    } catch (...) {
      parse.m_thrown = std::current_exception();
      XML_StopParser(parse.m_parser.get(), XML_FALSE);
    }
  }

  static void OnOpen(void* data, const XML_Char* name, const XML_Char** attributes) {
    Guard(data, [=](Parse& parse) { parse.Open(name, attributes); });
  }
  static void OnClose(void* data, const XML_Char*) {
    Guard(data, [](Parse& parse) {
      parse.EndPiece(true);
      parse.m_builder.Close();
      parse.m_first = false;
    });
  }
  static void OnText(void* data, const XML_Char* text, int length) {
    Guard(data, [=](Parse& parse) { parse.AddText({text, static_cast<std::size_t>(length)}); });
  }
  static void OnBreak(void* data) {
    Guard(data, [](Parse& parse) { parse.EndPiece(false); });
  }
  static void OnCharacterData(void* data) {
    OnBreak(data);
    static_cast<Parse*>(data)->m_isText = true;
  }
  // Entities would be read in other ways than here; nothing that the host reads has any.
  static void OnDocumentType(void* data, const XML_Char*, const XML_Char* file, const XML_Char*, int hasDeclarations) {
    Guard(data, [=](Parse& parse) {
      if (file != nullptr || hasDeclarations != 0) {
        parse.Fail("a document type that declares something or names a file; remove it");
      }
    });
  }

  void Open(const XML_Char* name, const XML_Char** attributes) {
    EndPiece(false);
    m_first = true;
    if (++m_elements > kMostElements) {
      Fail(TooMany(kMostElements, "elements"));
    }
    m_builder.Open(Line(), Column());
    XmlContent& content = m_builder.Current();
    content.name = name;
    for (; *attributes != nullptr; attributes += 2) {
      if (++m_attributes > kMostAttributes) {
        Fail(TooMany(kMostAttributes, "attributes"));
      }
      content.attributes.push_back({attributes[0], attributes[1]});
    }
  }

  void AddText(std::string_view text) {
    const char source = m_text[Offset()];
    m_isText = m_isText || source == '&' || text.find_first_not_of(" \t\r\n") != std::string_view::npos;
    m_piece += text;
  }

  // White space beside child elements is layout; alone in an element, and where it is written as a reference, it is text.
  void EndPiece(bool closes) {
    if (m_isText || (closes && m_first)) {
      m_builder.Current().text += m_piece;
      m_first = false;
    }
    m_piece.clear();
    m_isText = false;
  }

  std::size_t Offset() const { return static_cast<std::size_t>(XML_GetCurrentByteIndex(m_parser.get())); }
  std::size_t Line() const { return XML_GetCurrentLineNumber(m_parser.get()); }
  std::size_t Column() const { return XML_GetCurrentColumnNumber(m_parser.get()) + 1; }

  [[noreturn]] void Fail(const std::string& problem) const { throw XmlError(problem, Line(), Column()); }

  // Throws what the library found, in words that help.
  [[noreturn]] void Explain() const {
    const XML_Error error = XML_GetErrorCode(m_parser.get());
    const std::size_t offset = std::min(Offset(), m_text.size());
    if (error == XML_ERROR_NO_MEMORY) {
      throw std::bad_alloc();
    }
    if (error == XML_ERROR_UNDEFINED_ENTITY || error == XML_ERROR_BAD_CHAR_REF) {
      Fail(kBadReference);
    }
    if (error == XML_ERROR_INVALID_TOKEN) {
      const std::size_t begin = m_text.find_last_of("&;<>\"' \t\r\n", offset - 1);
      if (offset != 0 && begin != std::string::npos && m_text[begin] == '&') {
        throw XmlError(kBadReference, Line(), Column() - (offset - begin));
      }
      const auto byte = static_cast<unsigned char>(offset < m_text.size() ? m_text[offset] : ' ');
      if (byte < 0x20 || byte >= 0x80) {
        Fail(kBadCharacter);
      }
    }
    Fail(XML_ErrorString(error));
  }

  const std::string& m_text;
  XmlBuilder& m_builder;
  const std::unique_ptr<XML_ParserStruct, Free> m_parser;
  std::exception_ptr m_thrown;
  std::size_t m_elements = 0;
  std::size_t m_attributes = 0;
  std::string m_piece;    // of text, since the last markup
  bool m_isText = false;  // whatever stands around the piece
  bool m_first = false;   // nothing stands before it in its element
};

}  // namespace

void ParseXml(const std::string& text, XmlBuilder& builder) {
  Parse(text, builder).Run();
}

}  // namespace devhost
