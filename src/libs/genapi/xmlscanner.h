// Fills an XmlText with the elements of its text.
#pragma once

namespace GenApi::Detail {

class XmlText;

// RuntimeException with line and column where the text is not well-formed or exceeds a bound.
void scanXml(XmlText& text);

}  // namespace GenApi::Detail
