# cmake -DTITLE=... -DIN=file -DOUT=page.html [-DPRE=ON] -P WrapPage.cmake
# A page around the HTML fragment cmark writes, or around plain text (PRE):
# a manual page rendered for a terminal, which keeps every character that
# groff's own HTML output has no glyph for.
file(READ "${IN}" body)
if(PRE)
    string(REPLACE "&" "&amp;" body "${body}")
    string(REPLACE "<" "&lt;" body "${body}")
    string(REPLACE ">" "&gt;" body "${body}")
    set(body "<pre>\n${body}</pre>\n")
endif()
file(WRITE "${OUT}" "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>${TITLE}</title>\n</head>\n<body>\n<p><a href=\"index.html\">VelmarManager</a></p>\n${body}</body>\n</html>\n")
