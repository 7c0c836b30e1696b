<?xml version="1.0" encoding="UTF-8"?>
<!--
    Metadata as comma-separated values (RFC 4180, UTF-8 with a byte-order mark) for spreadsheets. File
    extension to set in the panel: .csv

    One header row, one row for the source file ("Source"), one for the converted file ("Converted"). After
    the fixed columns follows one column for each property name and then one for each tag name that either
    file has, headed "AudioProperties/NAME" and "IDTags/NAME". Several values of one name share the cell,
    joined by "; "; CsvLong.xslt keeps them apart. What a file does not have is an empty cell.

    Texts are in quotes, numbers and times are not, and no value is changed. A spreadsheet that opens the file
    as it likes takes 0049123 for a number and =1+1 for a formula, in quotes or not. An apostrophe before such
    a value would stop some of that, but every other reader would have it in the value. docs/style-sheets.md
    says how to import the file so that texts stay texts.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <!-- Values of one tag stand side by side: only the first of such a run can be the first of its name. -->
    <xsl:key name="column" match="AudioProperties/*[not(@name = preceding-sibling::*[1]/@name)]
        | IDTags/*[not(@name = preceding-sibling::*[1]/@name)]" use="concat(name(..), '/', @name)"/>
    <xsl:key name="entry" match="AudioProperties/* | IDTags/*"
        use="concat(generate-id(../..), name(..), '/', @name)"/>

    <xsl:variable name="special" select="'&quot;&#13;'"/>
    <xsl:variable name="marks" select="'&quot;&quot;'"/>
    <xsl:variable name="quote" select="'&quot;'"/>
    <xsl:variable name="rowEnd" select="'&#13;&#10;'"/>

    <xsl:template match="/">
        <xsl:variable name="properties"
            select="AudioMetadata/*/AudioProperties/*[not(@name = preceding-sibling::*[1]/@name)][
                generate-id() = generate-id(key('column', concat('AudioProperties/', @name))[1])]"/>
        <xsl:variable name="tags"
            select="AudioMetadata/*/IDTags/*[not(@name = preceding-sibling::*[1]/@name)][
                generate-id() = generate-id(key('column', concat('IDTags/', @name))[1])]"/>
        <xsl:value-of select="'&#xFEFF;File'"/>
        <xsl:for-each select="AudioMetadata/SourceFile/*[starts-with(name(), 'File')]
            | AudioMetadata/SourceFile/AudioFormat/*">
            <xsl:value-of select="concat(',', name())"/>
        </xsl:for-each>
        <xsl:apply-templates select="$properties" mode="heading"/>
        <xsl:apply-templates select="$tags" mode="heading"/>
        <xsl:value-of select="$rowEnd"/>
        <xsl:for-each select="AudioMetadata/*">
            <xsl:variable name="file" select="generate-id()"/>
            <xsl:value-of select="substring-before(name(), 'File')"/>
            <xsl:for-each select="*[starts-with(name(), 'File')] | AudioFormat/*">
                <xsl:choose>
                    <xsl:when test="starts-with(name(), 'FileName') and . != ''">
                        <xsl:call-template name="text">
                            <xsl:with-param name="text" select="string()"/>
                        </xsl:call-template>
                    </xsl:when>
                    <xsl:otherwise>
                        <xsl:value-of select="concat(',', .)"/>
                    </xsl:otherwise>
                </xsl:choose>
            </xsl:for-each>
            <xsl:for-each select="$properties">
                <xsl:call-template name="list">
                    <xsl:with-param name="entries"
                        select="key('entry', concat($file, 'AudioProperties/', @name))"/>
                </xsl:call-template>
            </xsl:for-each>
            <xsl:for-each select="$tags">
                <xsl:call-template name="list">
                    <xsl:with-param name="entries" select="key('entry', concat($file, 'IDTags/', @name))"/>
                </xsl:call-template>
            </xsl:for-each>
            <xsl:value-of select="$rowEnd"/>
        </xsl:for-each>
    </xsl:template>

    <xsl:template match="*" mode="heading">
        <xsl:call-template name="text">
            <xsl:with-param name="text" select="concat(name(..), '/', @name)"/>
        </xsl:call-template>
    </xsl:template>

    <!-- The cell of the entries of one name, if there are any. -->
    <xsl:template name="list">
        <xsl:param name="entries"/>
        <xsl:choose>
            <xsl:when test="$entries">
                <xsl:variable name="values">
                    <xsl:call-template name="values">
                        <xsl:with-param name="entries" select="$entries"/>
                    </xsl:call-template>
                </xsl:variable>
                <xsl:call-template name="text">
                    <xsl:with-param name="text" select="string($values)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>,</xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!-- A cell in quotes with the comma before it. -->
    <xsl:template name="text">
        <xsl:param name="text"/>
        <xsl:value-of select="concat(',', $quote)"/>
        <xsl:call-template name="escape">
            <xsl:with-param name="text" select="$text"/>
        </xsl:call-template>
        <xsl:value-of select="$quote"/>
    </xsl:template>

    <!--
        Writes text with every quote doubled and "; " for every CR, then clean as it stands. Splits near the
        middle, so that the depth stays small for a long text, and only beside such a character, so that a
        surrogate pair is never cut.
    -->
    <xsl:template name="escape">
        <xsl:param name="text"/>
        <xsl:param name="clean"/>
        <xsl:variable name="marked" select="translate($text, $special, $marks)"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($marked, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, $quote)">
                <xsl:variable name="at" select="$half + string-length(substring-before($right, $quote)) + 1"/>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $at - 1)"/>
                </xsl:call-template>
                <xsl:choose>
                    <xsl:when test="substring($text, $at, 1) = $quote">
                        <xsl:value-of select="concat($quote, $quote)"/>
                    </xsl:when>
                    <xsl:otherwise>
                        <xsl:value-of select="'; '"/>
                    </xsl:otherwise>
                </xsl:choose>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, $at + 1)"/>
                    <xsl:with-param name="clean" select="$clean"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($marked, $quote)">
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
