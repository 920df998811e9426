#include "devhost/xml/StrictXml.h"

#include <gmock/gmock.h>

#include <string>

namespace devhost {
namespace {

using testing::HasSubstr;

// What is wrong, with its column, or "".
std::string ProblemOf(const std::string& text) {
  try {
    ReadStrictXml(text);
    return "";
  } catch (const XmlError& error) {
    return std::to_string(error.Column()) + " " + error.what();
  }
}

class AGoodDocument : public testing::TestWithParam<const char*> {};

TEST_P(AGoodDocument, IsReadAsTheLenientReaderReadsIt) {
  EXPECT_EQ(ProblemOf(GetParam()), "");
  EXPECT_EQ(XmlText(ReadStrictXml(GetParam()), XmlStyle::Compact), XmlText(ReadXml(GetParam()), XmlStyle::Compact));
}

INSTANTIATE_TEST_SUITE_P(Strict, AGoodDocument,
                         testing::Values("<a/>", "<a />", "<a></a>", "<a></a >", " \t\r\n<a/>\n", "\xEF\xBB\xBF<a/>",
                                         "<?xml version='1.0'?><a/>",
                                         "<?xml version = \"1.1\" encoding='utf-8' standalone=\"yes\" ?>\n<a/>",
                                         "<?xml version=\"1.0\" standalone='no'?><a/>", "<?xml-stylesheet href='x'?><a/>",
                                         "<?a?><a/><?b c?d?>", "<!----><a/><!-- - - -->", "<a><!-- <b> & ]]> --></a>",
                                         "<a><?b <c> & ]]> ?></a>", "<a><![CDATA[<b> & ]] > ]]]]></a>", "<a b='1' c=\"2\"/>",
                                         "<a\n b\t=\r'1'/>", "<a b='\"&lt;&#10;'/>", "<a b='x\ty\nz\r\nu'/>",
                                         "<a>&amp;&lt;&gt;&quot;&apos;&#65;&#x41;&#x10FFFF;&#xe4;&#x20AC;</a>",
                                         "<a>]]&gt; ]] ></a>", "<_:.-9/>", "<\xC3\xA4\xC2\xB7/>", "<a>x\r\ny\rz</a>",
                                         "<a> <b/> </a>", "<a:b xmlns:a='c'/>"));

struct Bad {
  std::string text;
  const char* problem;
};

class ABadDocument : public testing::TestWithParam<Bad> {};

TEST_P(ABadDocument, IsRefusedWithTheColumn) {
  EXPECT_EQ(ProblemOf(GetParam().text), GetParam().problem) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Document, ABadDocument,
    testing::Values(Bad{"", "1 no root element"}, Bad{"x", "1 expected the root element"},
                    Bad{"</a>", "1 expected the root element"}, Bad{"<!-- -->", "9 no root element"},
                    Bad{"<a/>x", "5 text behind the root element"},
                    Bad{"<a/><b/>", "5 a second root element or markup behind the root element"},
                    Bad{"<a/>&#32;", "5 text behind the root element"},
                    Bad{"<a/><![CDATA[]]>", "5 a second root element or markup behind the root element"},
                    Bad{"<!DOCTYPE a><a/>", "1 a document type can change what the document says; remove it"},
                    Bad{"<a/><!DOCTYPE a>", "5 a document type behind the root element"},
                    Bad{std::string("<a>\0</a>", 8), "4 a character that XML does not allow, or that is not UTF-8"},
                    Bad{"<a>\xEF\xBF\xBE</a>", "4 a character that XML does not allow, or that is not UTF-8"},
                    Bad{"<a>\xC3</a>", "4 a character that XML does not allow, or that is not UTF-8"}));

INSTANTIATE_TEST_SUITE_P(
    Declaration, ABadDocument,
    testing::Values(Bad{" <?xml version='1.0'?><a/>", "7 <?xml stands only at the very beginning"},
                    Bad{"<a/><?xml version='1.0'?>", "10 <?xml stands only at the very beginning"},
                    Bad{"<?XmL?><a/>", "6 the name xml is reserved"},
                    Bad{"<?xml?><a/>", "6 <?xml stands only at the very beginning"},
                    Bad{"<?xml ?><a/>", "7 expected version="},
                    Bad{"<?xml version='1.0'><a/>", "20 expected ?> at the end of the declaration"},
                    Bad{"<?xml version='2.0'?><a/>", "20 the version is not 1.0"},
                    Bad{"<?xml version='1.'?><a/>", "19 the version is not 1.0"},
                    Bad{"<?xml version='1.0a'?><a/>", "21 the version is not 1.0"},
                    Bad{"<?xml version=''?><a/>", "17 the version is not 1.0"},
                    Bad{"<?xml version=1.0?><a/>", "15 expected a quote"}, Bad{"<?xml version '1.0'?><a/>", "15 expected ="},
                    Bad{"<?xml version='1.0\"?><a/>", "16 a quote of the declaration is not closed"},
                    Bad{"<?xml encoding='utf-8'?><a/>", "7 expected version="},
                    Bad{"<?xml version='1.0'encoding='utf-8'?><a/>", "20 expected ?> at the end of the declaration"},
                    Bad{"<?xml version='1.0' encoding='utf-16'?><a/>", "38 the encoding is not UTF-8"},
                    Bad{"<?xml version='1.0' encoding=''?><a/>", "32 the encoding is not UTF-8"},
                    Bad{"<?xml version='1.0' standalone='true'?><a/>", "38 standalone is neither yes nor no"},
                    Bad{"<?xml version='1.0' standalone='no' encoding='utf-8'?><a/>",
                        "37 expected ?> at the end of the declaration"}));

INSTANTIATE_TEST_SUITE_P(Markup, ABadDocument,
                         testing::Values(Bad{"<a><!-- -- --></a>", "11 a comment holds \"--\"; write \"- -\""},
                                         Bad{"<a><!-- --->x</a>", "11 a comment holds \"--\"; write \"- -\""},
                                         Bad{"<a><!--></a>", "8 a comment is not closed"},
                                         Bad{"<a><!---></a>", "8 a comment is not closed"},
                                         Bad{"<a><!- x --></a>", "4 \"<!\" begins neither a comment nor a CDATA section"},
                                         Bad{"<a><!DOCTYPE a></a>", "4 \"<!\" begins neither a comment nor a CDATA section"},
                                         Bad{"<a><![CDATA[]]</a>", "13 a CDATA section is not closed"},
                                         Bad{"<a><![cdata[]]></a>", "4 \"<!\" begins neither a comment nor a CDATA section"},
                                         Bad{"<a><? b?></a>", "6 a processing instruction has no name"},
                                         Bad{"<a><?b&c?></a>", "7 expected a blank or ?> behind the name"},
                                         Bad{"<a><?b c></a>", "8 a processing instruction is not closed"},
                                         Bad{"<a>]]></a>", "4 text holds \"]]>\"; write ]]&gt;"}));

INSTANTIATE_TEST_SUITE_P(
    Tags, ABadDocument,
    testing::Values(
        Bad{"<a>", "4 the element in line 1 is not closed"}, Bad{"<a>x", "5 the element in line 1 is not closed"},
        Bad{"<a></b>", "6 expected the end tag of the element in line 1"},
        Bad{"<a></ab>", "7 expected the end tag of the element in line 1"},
        Bad{"<a></a b>", "8 expected > at the end of an end tag"}, Bad{"<a", "3 expected an attribute, > or />"},
        Bad{"<a></a", "7 expected the end tag of the element in line 1"},
        Bad{"<a>< b/></a>", "5 \"<\" begins no element; write &lt; for the character itself"},
        Bad{"<a><1/></a>", "5 \"<\" begins no element; write &lt; for the character itself"},
        Bad{"<\xC2\xB7/>", "2 \"<\" begins no element; write &lt; for the character itself"},
        Bad{"<a\xC3\x97/>", "3 expected an attribute, > or />"}, Bad{"<a / >", "4 expected an attribute, > or />"},
        Bad{"<a b/>", "5 expected = behind the name of an attribute"},
        Bad{"<a b=c/>", "6 the value of an attribute does not stand in quotes"},
        Bad{"<a b='c/>", "10 the value of an attribute is not closed"},
        Bad{"<a b='<'/>", "7 the value of an attribute holds \"<\"; write &lt;"},
        Bad{"<a b='1'c='2'/>", "9 expected an attribute, > or />"}, Bad{"<a b='1' b='2'/>", "11 one attribute stands twice"},
        Bad{"<a 1='2'/>", "4 expected the name of an attribute"}));

INSTANTIATE_TEST_SUITE_P(
    References, ABadDocument,
    testing::Values(Bad{"<a>&</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&x;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&amp</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&AMP;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#x;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#X41;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#0;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#xD800;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#x110000;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#4294967361;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#99999999999999999999;</a>",
                        "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#xFFFE;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&# 65;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a>&#-65;</a>", "4 \"&\" begins no known reference; write &amp; for the character itself"},
                    Bad{"<a b='&x;'/>", "7 \"&\" begins no known reference; write &amp; for the character itself"}));

TEST(AText, IsExact) {
  EXPECT_EQ(ReadStrictXml("<a> t<!-- -->ru<?x?>e<![CDATA[ ]]> </a>").text, " true  ");
  EXPECT_EQ(ReadStrictXml("<a><!-- --> </a>").text, " ");
  EXPECT_EQ(ReadStrictXml("<a><![CDATA[]]></a>").text, "");
  EXPECT_EQ(ReadStrictXml("<a>x\r\ny\rz&#13;<![CDATA[\r]]></a>").text, "x\ny\nz\r\n");
  EXPECT_EQ(ReadStrictXml("<a> <b/>&#32;</a>").text, "");
  EXPECT_EQ(ReadStrictXml("<a> x <b/> </a>").text, " x  ");
  EXPECT_EQ(*ReadStrictXml("<a b='x\ty\r\nz\r&#9;'/>").FindAttribute("b"), "x y z \t");
}

TEST(AnElement, KnowsItsPlace) {
  const XmlElement root = ReadStrictXml("<?xml version='1.0'?>\n<a>\n  <b/></a>");
  EXPECT_EQ(root.line, 2U);
  EXPECT_EQ(root.children.at(0).line, 3U);
  EXPECT_EQ(root.children.at(0).column, 3U);
}

TEST(ADeepDocument, IsReadAsDeepAsOtherProgramsReadIt) {
  const auto deep = [](std::size_t depth) {
    std::string text;
    for (std::size_t i = 0; i != depth; ++i) {
      text += "<a>";
    }
    for (std::size_t i = 0; i != depth; ++i) {
      text += "</a>";
    }
    return text;
  };
  EXPECT_EQ(ProblemOf(deep(kDeepestStrictXml)), "");
  EXPECT_THAT(ProblemOf(deep(kDeepestStrictXml + 1)), HasSubstr("nested more than 257 deep"));
}

// It may be a part of a community that was not escaped.
TEST(AName, IsNotRepeated) {
  for (const char* const text :
       {"<kX7>", "<a><kX7 kX7/></a>", "<a>&kX7;</a>", "<a><?kX7</a>", "<kX7></a>", "<a kX7='1' kX7='2'/>"}) {
    EXPECT_THAT(ProblemOf(text), testing::AllOf(testing::Not(""), testing::Not(HasSubstr("kX7"))));
  }
}

}  // namespace
}  // namespace devhost
