<?xml version="1.0" encoding="UTF-8"?>
<!--
    The converted file's tags as Vorbis comments, one NAME=VALUE to a line. File extension to set in the
    panel: .vc (any will do). To give them to a FLAC file, in place of those that it has:

        metaflac -remove-all-tags song.flac
        metaflac -no-utf8-convert -import-tags-from=song.vc song.flac

    (each option begins with two hyphens, which a comment here cannot hold). Every value of a tag that has
    several is a line of its own. The format has no escapes, so a line break inside a value becomes a space,
    and a tag is left out when its name holds what a comment's name must not: "=", "~", or anything but
    printable ASCII. metaflac 1.4 takes nothing from a file in which a line has 65,535 bytes or more.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <!-- A string in apostrophes cannot hold one, hence the variable. -->
    <xsl:variable name="apostrophe">'</xsl:variable>
    <xsl:variable name="allowed" select="concat($apostrophe, ' !&quot;#$%&amp;()*+,-./0123456789:;&lt;&gt;?@',
        'ABCDEFGHIJKLMNOPQRSTUVWXYZ[\]^_`abcdefghijklmnopqrstuvwxyz{|}')"/>

    <xsl:template match="/">
        <xsl:for-each select="AudioMetadata/ConvertedFile/IDTags/*[translate(@name, $allowed, '') = '']">
            <xsl:value-of select="concat(@name, '=', translate(., '&#10;&#13;', '  '), '&#10;')"/>
        </xsl:for-each>
    </xsl:template>
</xsl:stylesheet>
