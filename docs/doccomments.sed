# The public headers' comments as Doxygen reads them: a comment line before a declaration
# documents it, a comment after a declaration on its line documents that declaration.
s|^\([[:space:]]*\)// |\1/// |
s|^\([[:space:]]*\)//$|\1///|
s|\([;,]\)\([[:space:]]*\)// |\1\2///< |
# //@{ ... //@} mark a group of members that share the description before it.
s|^\([[:space:]]*\)//@\([{}]\)|\1///@\2|
