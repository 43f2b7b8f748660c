# Hands a header's comments to Doxygen, so that the headers stay plain: a comment before a
# declaration describes it, one behind code describes what stands before it. The headings of
# sections, which have no full stop, stay as they are.
\,(^ *(/\*|\*|//)|[;,{] +(/\*|//)), s, \\([a-z]), \\\\\1,g
1 s,^/\* ,/** @file\n * ,
1 s,^// ,/// @file\n/// ,
\,^ */\* .*[^.] \*/$, b
\,^// [A-Z][a-z]+$, b
s,^( *)/\* ,\1/** ,
s,^( *)// ,\1/// ,
s,^( *[^ /].*[;,{a-zA-Z0-9)]) +/\* ,\1 /**< ,
s,^( *[^ /].*[;,{]) +// ,\1 ///< ,
