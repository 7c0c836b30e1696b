<?xml version="1.0" encoding="UTF-8"?>
<!--
    Metadata as JSON. File extension to set in the panel: .json

    Keys are the element names of the document; below AudioProperties and IDTags they are the names as the
    decoders spell them. Sizes, length, bitrate and the audio format are numbers; an empty name or time (no
    source file on disk) is null. A property or tag is always an array of strings, of more than one when the
    name has several values in one list; its key then stands where it first occurred. For jq, the artists of a
    song, and the songs whose source was not 44.1 kHz:

        jq -r '.ConvertedFile.IDTags.ARTIST[]?' song.json
        jq -r 'select(.SourceFile.AudioFormat.SamplesPerSec != 44100) | .ConvertedFile.FileName' *.json
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:key name="entry" match="AudioProperties/* | IDTags/*" use="concat(generate-id(..), ' ', @name)"/>
    <!-- Values of one tag stand side by side: only the first of such a run can be the first of its name. -->
    <xsl:key name="run" match="AudioProperties/*[not(@name = preceding-sibling::*[1]/@name)]
        | IDTags/*[not(@name = preceding-sibling::*[1]/@name)]" use="concat(generate-id(..), ' ', @name)"/>

    <xsl:variable name="special" select="'&quot;\&#9;&#10;&#13;'"/>
    <xsl:variable name="marks" select="'&quot;&quot;&quot;&quot;&quot;'"/>
    <xsl:variable name="mark" select="'&quot;'"/>

    <xsl:template match="/">
        <xsl:text>{</xsl:text>
        <xsl:for-each select="AudioMetadata/*">
            <xsl:if test="position() &gt; 1">,</xsl:if>
            <xsl:value-of select="concat('&#10;  &quot;', name(), '&quot;: {')"/>
            <xsl:apply-templates select="*"/>
            <xsl:value-of select="'&#10;  }'"/>
        </xsl:for-each>
        <xsl:value-of select="'&#10;}&#10;'"/>
    </xsl:template>

    <xsl:template match="AudioMetadata/*/*">
        <xsl:if test="position() &gt; 1">,</xsl:if>
        <xsl:value-of select="concat('&#10;    &quot;', name(), '&quot;: ')"/>
        <xsl:choose>
            <xsl:when test="self::AudioProperties or self::IDTags">
                <xsl:text>{</xsl:text>
                <xsl:call-template name="entries"/>
                <xsl:value-of select="'&#10;    }'"/>
            </xsl:when>
            <xsl:when test="self::AudioFormat">
                <xsl:text>{</xsl:text>
                <xsl:for-each select="*">
                    <xsl:if test="position() &gt; 1">,</xsl:if>
                    <xsl:value-of select="concat('&#10;      &quot;', name(), '&quot;: ', .)"/>
                </xsl:for-each>
                <xsl:value-of select="'&#10;    }'"/>
            </xsl:when>
            <xsl:when test="self::FileSize or self::FileLength or self::FileBitrate">
                <xsl:value-of select="."/>
            </xsl:when>
            <xsl:when test=". = ''">null</xsl:when>
            <xsl:otherwise>
                <xsl:call-template name="string">
                    <xsl:with-param name="text" select="."/>
                </xsl:call-template>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!-- The members of one open list (the context node), one for each name in it. -->
    <xsl:template name="entries">
        <xsl:variable name="list" select="concat(generate-id(), ' ')"/>
        <xsl:for-each select="*[not(@name = preceding-sibling::*[1]/@name)][
            generate-id() = generate-id(key('run', concat($list, @name))[1])]">
            <xsl:if test="position() &gt; 1">,</xsl:if>
            <xsl:value-of select="'&#10;      '"/>
            <xsl:call-template name="string">
                <xsl:with-param name="text" select="@name"/>
            </xsl:call-template>
            <xsl:text>: [</xsl:text>
            <xsl:call-template name="string">
                <xsl:with-param name="text">
                    <xsl:call-template name="values">
                        <xsl:with-param name="entries" select="key('entry', concat($list, @name))"/>
                    </xsl:call-template>
                </xsl:with-param>
            </xsl:call-template>
            <xsl:text>]</xsl:text>
        </xsl:for-each>
    </xsl:template>

    <!-- One string, or several when there are CRs in text. -->
    <xsl:template name="string">
        <xsl:param name="text"/>
        <xsl:text>"</xsl:text>
        <xsl:call-template name="escape">
            <xsl:with-param name="text" select="string($text)"/>
        </xsl:call-template>
        <xsl:text>"</xsl:text>
    </xsl:template>

    <!--
        Writes text with its special characters escaped, then clean as it stands. Splits near the middle, so
        that the depth stays small for a long text, and only beside a special character, so that a surrogate
        pair is never cut.
    -->
    <xsl:template name="escape">
        <xsl:param name="text"/>
        <xsl:param name="clean"/>
        <xsl:variable name="marked" select="translate($text, $special, $marks)"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($marked, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, $mark)">
                <xsl:variable name="at" select="$half + string-length(substring-before($right, $mark)) + 1"/>
                <xsl:variable name="char" select="substring($text, $at, 1)"/>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $at - 1)"/>
                </xsl:call-template>
                <xsl:choose>
                    <xsl:when test="$char = '&#9;'">\t</xsl:when>
                    <xsl:when test="$char = '&#10;'">\n</xsl:when>
                    <xsl:when test="$char = '&#13;'">", "</xsl:when>
                    <xsl:otherwise>
                        <xsl:value-of select="concat('\', $char)"/>
                    </xsl:otherwise>
                </xsl:choose>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, $at + 1)"/>
                    <xsl:with-param name="clean" select="$clean"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($marked, $mark)">
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $half)"/>
                    <xsl:with-param name="clean" select="concat(substring($text, $half + 1), $clean)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="concat($text, $clean)"/>
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
