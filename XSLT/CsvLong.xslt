<?xml version="1.0" encoding="UTF-8"?>
<!--
    One row for each fact, as comma-separated values (RFC 4180, UTF-8), for databases and programs. File
    extension to set in the panel: .facts.csv

    The columns are the same for every document, so the rows of many make one table; docs/style-sheets.md
    shows how:

        File   the converted file with its folder, in all rows of its document, those of the source too
        List   where the fact stands: SourceFile, SourceFile/AudioProperties, SourceFile/AudioFormat,
               SourceFile/IDTags, or the same of ConvertedFile
        Name   element name of a fact, name of a property or tag as the decoder spells it
        Index  1, and 2, 3 and so on for further values of a name in a list
        Value  as the document has it, with nothing joined or left out; may be empty
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:key name="entry" match="AudioProperties/* | IDTags/*" use="concat(generate-id(..), ' ', @name)"/>
    <!-- Values of one tag stand side by side: only the first of such a run can be the first of its name. -->
    <xsl:key name="run" match="AudioProperties/*[not(@name = preceding-sibling::*[1]/@name)]
        | IDTags/*[not(@name = preceding-sibling::*[1]/@name)]" use="concat(generate-id(..), ' ', @name)"/>

    <xsl:variable name="quote" select="'&quot;'"/>
    <xsl:variable name="rowEnd" select="'&#13;&#10;'"/>
    <xsl:variable name="file">
        <xsl:call-template name="cell">
            <xsl:with-param name="text">
                <!-- A name without a backslash stands whole as its folder, too. -->
                <xsl:if test="contains(/AudioMetadata/ConvertedFile/FileNamePath, '\')">
                    <xsl:value-of select="/AudioMetadata/ConvertedFile/FileNamePath"/>
                </xsl:if>
                <xsl:value-of select="/AudioMetadata/ConvertedFile/FileName"/>
            </xsl:with-param>
        </xsl:call-template>
    </xsl:variable>

    <xsl:template match="/">
        <xsl:value-of select="concat('File,List,Name,Index,Value', $rowEnd)"/>
        <xsl:apply-templates select="AudioMetadata/*/*"/>
    </xsl:template>

    <xsl:template match="AudioMetadata/*/*[starts-with(name(), 'File')]">
        <xsl:call-template name="rows">
            <xsl:with-param name="list" select="name(..)"/>
            <xsl:with-param name="name" select="name()"/>
            <xsl:with-param name="text" select="string()"/>
        </xsl:call-template>
    </xsl:template>

    <xsl:template match="AudioFormat">
        <xsl:for-each select="*">
            <xsl:call-template name="rows">
                <xsl:with-param name="list" select="concat(name(../..), '/AudioFormat')"/>
                <xsl:with-param name="name" select="name()"/>
                <xsl:with-param name="text" select="string()"/>
            </xsl:call-template>
        </xsl:for-each>
    </xsl:template>

    <xsl:template match="AudioProperties | IDTags">
        <xsl:variable name="list" select="concat(generate-id(), ' ')"/>
        <xsl:for-each select="*[not(@name = preceding-sibling::*[1]/@name)][
            generate-id() = generate-id(key('run', concat($list, @name))[1])]">
            <xsl:variable name="name">
                <xsl:call-template name="cell">
                    <xsl:with-param name="text" select="string(@name)"/>
                </xsl:call-template>
            </xsl:variable>
            <xsl:variable name="values">
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="key('entry', concat($list, @name))"/>
                </xsl:call-template>
            </xsl:variable>
            <xsl:call-template name="rows">
                <xsl:with-param name="list" select="concat(name(../..), '/', name(..))"/>
                <xsl:with-param name="name" select="string($name)"/>
                <xsl:with-param name="text" select="string($values)"/>
            </xsl:call-template>
        </xsl:for-each>
    </xsl:template>

    <!--
        A row for each of the values in text, which has a CR between them; name is a cell already. Splits near
        the middle, so that the depth stays small.
    -->
    <xsl:template name="rows">
        <xsl:param name="list"/>
        <xsl:param name="name"/>
        <xsl:param name="index" select="1"/>
        <xsl:param name="text"/>
        <xsl:param name="tail"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($text, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, '&#13;')">
                <xsl:variable name="left"
                    select="concat(substring($text, 1, $half), substring-before($right, '&#13;'))"/>
                <xsl:call-template name="rows">
                    <xsl:with-param name="list" select="$list"/>
                    <xsl:with-param name="name" select="$name"/>
                    <xsl:with-param name="index" select="$index"/>
                    <xsl:with-param name="text" select="$left"/>
                </xsl:call-template>
                <xsl:call-template name="rows">
                    <xsl:with-param name="list" select="$list"/>
                    <xsl:with-param name="name" select="$name"/>
                    <xsl:with-param name="index" select="$index + 1 + string-length($left)
                        - string-length(translate($left, '&#13;', ''))"/>
                    <xsl:with-param name="text" select="substring-after($right, '&#13;')"/>
                    <xsl:with-param name="tail" select="$tail"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($text, '&#13;')">
                <xsl:call-template name="rows">
                    <xsl:with-param name="list" select="$list"/>
                    <xsl:with-param name="name" select="$name"/>
                    <xsl:with-param name="index" select="$index"/>
                    <xsl:with-param name="text" select="substring($text, 1, $half)"/>
                    <xsl:with-param name="tail" select="concat($right, $tail)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="concat($file, ',', $list, ',', $name, ',', $index, ',')"/>
                <xsl:call-template name="cell">
                    <xsl:with-param name="text" select="concat($text, $tail)"/>
                </xsl:call-template>
                <xsl:value-of select="$rowEnd"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!-- One cell, in quotes when it needs them. -->
    <xsl:template name="cell">
        <xsl:param name="text"/>
        <xsl:choose>
            <xsl:when test="translate($text, ',&quot;&#10;', '') = $text">
                <xsl:value-of select="$text"/>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="$quote"/>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="string($text)"/>
                </xsl:call-template>
                <xsl:value-of select="$quote"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!--
        Writes text with every quote doubled, then clean as it stands. Splits near the middle, so that the
        depth stays small for a long text, and only beside a quote, so that a surrogate pair is never cut.
    -->
    <xsl:template name="escape">
        <xsl:param name="text"/>
        <xsl:param name="clean"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($text, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, $quote)">
                <xsl:call-template name="escape">
                    <xsl:with-param name="text"
                        select="concat(substring($text, 1, $half), substring-before($right, $quote))"/>
                </xsl:call-template>
                <xsl:value-of select="concat($quote, $quote)"/>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring-after($right, $quote)"/>
                    <xsl:with-param name="clean" select="$clean"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($text, $quote)">
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $half)"/>
                    <xsl:with-param name="clean" select="concat($right, $clean)"/>
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
