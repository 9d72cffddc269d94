# Run as a script: writes OUTPUT, a C++ source that includes HEADER and fills in RECORD of the type
# TYPE, whose members are texts. PARTS has MEMBER=FILE,FILE... for each member, separated by |; files
# are joined.
set(members "")
set(arrays "")
string(REPLACE "|" ";" PARTS "${PARTS}")
foreach(part IN LISTS PARTS)
    string(REGEX MATCH "^([^=]+)=(.*)$" part "${part}")
    set(member ${CMAKE_MATCH_1})
    string(REPLACE "," ";" files "${CMAKE_MATCH_2}")
    set(bytes "")
    foreach(file IN LISTS files)
        file(READ ${file} hex HEX)
        string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," hex "${hex}")
        string(APPEND bytes "${hex}\n")
    endforeach()
    # Arrays of bytes, since a string literal may be too long for a compiler.
    string(APPEND arrays "constexpr char k_${member}[] = {\n${bytes}'\\0'};\n")
    string(APPEND members "    k_${member},\n")
endforeach()
file(WRITE ${OUTPUT}
    "#include \"${HEADER}\"\n\nnamespace {\n\n${arrays}\n} // namespace\n\n"
    "const ${TYPE} ${RECORD}{\n${members}};\n")
