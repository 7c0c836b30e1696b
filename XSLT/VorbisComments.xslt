<?xml version="1.0" encoding="UTF-8"?>
<!--
    The converted file's tags as Vorbis comments, one NAME=VALUE to a line. File extension to set in the
    panel: .vc (any will do). docs/style-sheets.md has the command that gives them to a FLAC file.

    Every value of a tag that has several is a line of its own. The format has no escapes, so a line break
    inside a value becomes a space, and a tag is left out when its name holds what a comment's name must
    not: "=", "~", or anything but printable ASCII. metaflac 1.4 takes nothing from a file in which a line
    has 65,535 bytes or more.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:key name="tag" match="ConvertedFile/IDTags/*" use="@name"/>
    <!-- Values of one tag stand side by side: only the first of such a run can be the first of its name. -->
    <xsl:key name="run" match="ConvertedFile/IDTags/*[not(@name = preceding-sibling::*[1]/@name)]"
        use="@name"/>

    <!-- A string in apostrophes cannot hold one, hence the variable. -->
    <xsl:variable name="apostrophe">'</xsl:variable>
    <xsl:variable name="allowed" select="concat($apostrophe, ' !&quot;#$%&amp;()*+,-./0123456789:;&lt;&gt;?@',
        'ABCDEFGHIJKLMNOPQRSTUVWXYZ[\]^_`abcdefghijklmnopqrstuvwxyz{|}')"/>

    <xsl:template match="/">
        <xsl:for-each select="AudioMetadata/ConvertedFile/IDTags/*[
            not(@name = preceding-sibling::*[1]/@name)][translate(@name, $allowed, '') = ''][
            generate-id() = generate-id(key('run', @name)[1])]">
            <xsl:variable name="values">
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="key('tag', @name)"/>
                </xsl:call-template>
            </xsl:variable>
            <xsl:call-template name="comments">
                <xsl:with-param name="text" select="translate($values, '&#10;', ' ')"/>
            </xsl:call-template>
        </xsl:for-each>
    </xsl:template>

    <!-- A line for each of the values in text. Splits near the middle, so that the depth stays small. -->
    <xsl:template name="comments">
        <xsl:param name="text"/>
        <xsl:param name="tail"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($text, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, '&#13;')">
                <xsl:call-template name="comments">
                    <xsl:with-param name="text"
                        select="concat(substring($text, 1, $half), substring-before($right, '&#13;'))"/>
                </xsl:call-template>
                <xsl:call-template name="comments">
                    <xsl:with-param name="text" select="substring-after($right, '&#13;')"/>
                    <xsl:with-param name="tail" select="$tail"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($text, '&#13;')">
                <xsl:call-template name="comments">
                    <xsl:with-param name="text" select="substring($text, 1, $half)"/>
                    <xsl:with-param name="tail" select="concat($right, $tail)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="concat(@name, '=', $text, $tail, '&#10;')"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!--
        Writes the values of one tag, $entries, with a CR between them: no value holds one. A value with
        Windows line ends was cut at the CR of each, so an entry that begins with LF goes on with the value
        before it. An empty entry was LF alone if the nearest entry with a text before or after it begins so.

        For a part of the entries, $before and $after are those nearest entries. Halves keep the depth small.
    -->
    <xsl:template name="values">
        <xsl:param name="entries"/>
        <xsl:param name="before" select="/.."/>
        <xsl:param name="after" select="/.."/>
        <xsl:variable name="half" select="floor(count($entries) div 2)"/>
        <xsl:variable name="last" select="$entries[position() &lt;= $half][
            . != '' or not(@name = preceding-sibling::*[1]/@name)][last()]"/>
        <xsl:variable name="next" select="$entries[position() &gt; $half][
            . != '' or not(@name = preceding-sibling::*[1]/@name)][1]"/>
        <xsl:choose>
            <xsl:when test="($last or $next) and $entries[. = '' and @name = preceding-sibling::*[1]/@name]
                and ($entries[starts-with(., '&#10;')] or starts-with($before, '&#10;')
                or starts-with($after, '&#10;'))">
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="$entries[position() &lt;= $half]"/>
                    <xsl:with-param name="before" select="$before"/>
                    <xsl:with-param name="after" select="$next | $after[not($next)]"/>
                </xsl:call-template>
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="$entries[position() &gt; $half]"/>
                    <xsl:with-param name="before" select="$last | $before[not($last)]"/>
                    <xsl:with-param name="after" select="$after"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:variable name="blank" select="boolean(($before | $after)[starts-with(., '&#10;')
                    and @name = preceding-sibling::*[1]/@name])"/>
                <xsl:for-each select="$entries">
                    <xsl:variable name="goesOn" select="@name = preceding-sibling::*[1]/@name
                        and (starts-with(., '&#10;') or $blank and . = '')"/>
                    <xsl:choose>
                        <xsl:when test="not($goesOn) and ($before or position() &gt; 1)">
                            <xsl:value-of select="'&#13;'"/>
                        </xsl:when>
                        <xsl:when test="$goesOn and . = ''">
                            <xsl:value-of select="'&#10;'"/>
                        </xsl:when>
                    </xsl:choose>
                    <xsl:value-of select="."/>
                </xsl:for-each>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>
</xsl:stylesheet>
