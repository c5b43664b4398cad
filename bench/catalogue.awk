# The HTML catalogue as an awk script would make it: a yardstick for "scrconf -lh", which it equals
# byte for byte, the date apart, on the inputs of the benchmark.
#     mawk -v entries=FOLDER -f bench/catalogue.awk LIBRARY CARDS > PAGE
# FOLDER holds the display entries, LIBRARY is the timing library, CARDS the card list.

function scan_library(   key) {
    if ($1 == "PreadjustedTimingName") {
        split($0, key, "\"")
        timing = key[2]
    } else if ($1 == "HorPixel") {
        width_of[timing] = int(($3 + 7) / 8) * 8
    } else if ($1 == "ScanType") {
        interlaced[timing] = tolower($3) == "interlaced"
    }
}

# The column of a mode, from 0; -1 for a mode outside the table.
function column_of(width, depth,   column) {
    if (width < 640 || width > 1600 || depth < 4 || depth > 24)
        return -1
    for (column = 0; column < 24; column++)
        if (widths[column] > width || (widths[column] == width && depths[column] >= depth))
            return column
}

function add_mode(width, depth, refresh, interlace,   column) {
    column = column_of(width, depth == 32 ? 24 : depth)
    if (column >= 0)
        cells[column] = cells[column] (refresh > 0 ? " " refresh (interlace ? "i" : "") : "fxd")
}

function read_mode(line,   quoted) {
    if ($5 ~ /^"/) {
        split(line, quoted, "\"")
        if (quoted[2] in width_of)
            add_mode(width_of[quoted[2]], $3, $4, interlaced[quoted[2]])
    } else if (NF >= 13) {
        add_mode($6, $3, $4, int($14 / 16) % 2)
    } else {
        add_mode($1, $3, $4, int($7 / 16) % 2)
    }
}

# Fills `cells` and `chipset` from a class's display entry.
function read_entry(class,   path, modes, at) {
    path = entries "/" class "/config"
    chipset = class
    chipset_found = modes = 0
    split("", cells)
    while ((getline < path) > 0) {
        if (!chipset_found && (at = index(tolower($0), "chipset"))) {
            chipset = substr($0, at + 8) "\n"
            chipset_found = 1
        }
        if (modes && $1 ~ /^[-+]?[0-9]/)
            read_mode($0)
        modes = modes || /^Modes/
    }
    close(path)
}

function print_head(   n) {
    print "<HTML>\n<HEAD>\n<TITLE>Korvel-X Supported Graphics Cards</TITLE>\n</HEAD>\n<BODY>"
    print "<H1 ALIGN=CENTER>Korvel-X n.n.n Supported Graphics Cards</H1>"
    print "<TABLE BORDER CELLPADDING=5>\n\t<TR>\n\t\t<TH ROWSPAN=3>Model Name<br>and Number</TH>"
    print "\t\t<TH ROWSPAN=3>Chipset</TH>"
    print "\t\t<TH COLSPAN=24>Resolutions and Colors Supported</TH>\n\t</TR>\n\t<TR>"
    for (n = 1; n <= 6; n++)
        printf "\t\t<TH COLSPAN=4>%s</TH>\n", sizes[n]
    print "\t</TR>\n\t<TR>"
    for (n = 1; n <= 6; n++)
        print "\t\t<TH>16</TH>\n\t\t<TH>256</TH>\n\t\t<TH>32K</TH>\n\t\t<TH>16.7M</TH>"
    print "\t</TR>\n\t<TR>"
}

function print_card(line,   name, column) {
    name = substr(line, 1, index(line, "\t") - 1)
    read_entry(substr(line, index(line, "\t") + 1))
    if (cards % 10000 != 0) {
        print "\t</TR>"
    } else {
        if (cards > 0)
            print_foot()
        print_head()
    }
    cards++
    printf "\t<TR>\n\t\t<TD NOWRAP>%s</TD>\n\t\t<TD NOWRAP>%s</TD>\n", name, chipset
    for (column = 0; column < 24; column++)
        print column in cells ? "\t\t<TD ALIGN=CENTER><IMG SRC=\"../images/check.xbm\"></TD>" \
                              : "\t\t<TD><BR></TD>"
}

function print_foot(   date) {
    "date '+%a %b %e %H:%M:%S %Y'" | getline date
    close("date '+%a %b %e %H:%M:%S %Y'")
    print "\t</TR>\n</TABLE>\n<P>\n<i>This table was generated on " date "\n</i>\n<P>"
    print "<a href=\"../Korvel.html\"><img align=middle src=\"../images/dunmere.small.gif\">"
    print "Home Page\n</BODY>\n</HTML>"
}

BEGIN {
    split("640x480 800x600 1024x768 1152x864 1280x1024 1600x1200", sizes)
    split("4 8 16 24", depth_list)
    for (n = 0; n < 24; n++) {
        widths[n] = sizes[int(n / 4) + 1] + 0
        depths[n] = depth_list[n % 4 + 1]
    }
    sorted = "LC_ALL=C sort -t '\t' -k 1,1 > '" entries "/../sorted'"
}
FILENAME == ARGV[1] { scan_library(); next }
/^Class/ { class = substr($0, 7); next }
/^[:#]/ || length($0) < 5 { next }
{ sub(/,.*/, ""); print $0 "\t" class | sorted }
END {
    close(sorted)
    while ((getline line < (entries "/../sorted")) > 0)
        print_card(line)
    print_foot()
}
