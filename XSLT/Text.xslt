<?xml version="1.0" encoding="UTF-8"?>
<!--
    A plain-text report with aligned columns. File extension to set in the panel: .txt

    Every value begins in the same column; a further value of a tag, or a further line of a value, stands
    under the first. A name too long for its column has its value on the next line. Lines end with CR LF.

    Length and bitrate stay as the decoder gave them, since nothing says their units. Where the usual unit can
    be the right one, what the number means in it follows in parentheses. An audio format of which nothing is
    known is left out, and a value of nothing but blanks comes as an empty one from MSXML.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:variable name="lineEnd" select="'&#13;&#10;'"/>
    <xsl:variable name="blanks" select="'                                        '"/>
    <!-- Room for the longest fixed label, more for longer names, but no more than the blanks have. -->
    <xsl:variable name="longest">
        <xsl:for-each select="/AudioMetadata/*/AudioProperties/* | /AudioMetadata/*/IDTags/*">
            <xsl:sort select="string-length(@name)" data-type="number" order="descending"/>
            <xsl:if test="position() = 1">
                <xsl:value-of select="string-length(@name)"/>
            </xsl:if>
        </xsl:for-each>
    </xsl:variable>
    <xsl:variable name="width">
        <xsl:choose>
            <xsl:when test="$longest &gt; string-length($blanks) - 4">
                <xsl:value-of select="string-length($blanks)"/>
            </xsl:when>
            <xsl:when test="$longest &gt; 18">
                <xsl:value-of select="$longest + 4"/>
            </xsl:when>
            <xsl:otherwise>22</xsl:otherwise>
        </xsl:choose>
    </xsl:variable>
    <xsl:variable name="special" select="'&#10;&#13;'"/>
    <xsl:variable name="marks" select="'&#10;&#10;'"/>
    <xsl:variable name="newLine" select="concat($lineEnd, substring($blanks, 1, $width))"/>

    <xsl:template match="/">
        <xsl:for-each select="AudioMetadata/SourceFile">
            <xsl:value-of select="concat('SOURCE FILE', $lineEnd, '===========', $lineEnd)"/>
            <xsl:call-template name="file"/>
        </xsl:for-each>
        <xsl:for-each select="AudioMetadata/ConvertedFile">
            <xsl:value-of select="concat($lineEnd, 'CONVERTED FILE', $lineEnd, '==============', $lineEnd)"/>
            <xsl:call-template name="file"/>
        </xsl:for-each>
    </xsl:template>

    <xsl:template name="file">
        <xsl:apply-templates select="*[starts-with(name(), 'File')][not(self::FileNameNoExt or self::FileNameExt)]"/>
        <!-- One of which nothing is known holds zeros. -->
        <xsl:for-each select="AudioFormat[Channels != 0 or SamplesPerSec != 0 or BitsPerSample != 0]">
            <xsl:value-of select="concat($lineEnd, 'Audio format', $lineEnd)"/>
            <xsl:apply-templates select="*"/>
        </xsl:for-each>
        <xsl:if test="AudioProperties/*">
            <xsl:value-of select="concat($lineEnd, 'Audio properties', $lineEnd)"/>
            <xsl:call-template name="groups">
                <xsl:with-param name="entries" select="AudioProperties/*"/>
            </xsl:call-template>
        </xsl:if>
        <xsl:if test="IDTags/*">
            <xsl:value-of select="concat($lineEnd, 'Tags', $lineEnd)"/>
            <xsl:call-template name="groups">
                <xsl:with-param name="entries" select="IDTags/*"/>
            </xsl:call-template>
        </xsl:if>
    </xsl:template>

    <xsl:template match="AudioMetadata/*/*[starts-with(name(), 'File')] | AudioFormat/*">
        <xsl:call-template name="label">
            <xsl:with-param name="text">
                <xsl:choose>
                    <xsl:when test="self::FileName">Name</xsl:when>
                    <xsl:when test="self::FileNamePath">Folder</xsl:when>
                    <xsl:when test="self::FileSize">Size in bytes</xsl:when>
                    <xsl:when test="self::FileLength">Length</xsl:when>
                    <xsl:when test="self::FileBitrate">Bitrate</xsl:when>
                    <xsl:when test="self::FileCreated">Created (UTC)</xsl:when>
                    <xsl:when test="self::FileModified">Modified (UTC)</xsl:when>
                    <xsl:when test="self::FileAccessed">Accessed (UTC)</xsl:when>
                    <xsl:when test="self::Channels">Channels</xsl:when>
                    <xsl:when test="self::SamplesPerSec">Samples per second</xsl:when>
                    <xsl:when test="self::BitsPerSample">Bits per sample</xsl:when>
                    <xsl:when test="self::AvgBytesPerSec">Bytes per second</xsl:when>
                    <xsl:otherwise>
                        <xsl:value-of select="name()"/>
                    </xsl:otherwise>
                </xsl:choose>
            </xsl:with-param>
        </xsl:call-template>
        <xsl:choose>
            <xsl:when test=". = ''">-</xsl:when>
            <xsl:when test="self::FileCreated or self::FileModified or self::FileAccessed">
                <xsl:value-of select="translate(., 'T', ' ')"/>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="."/>
            </xsl:otherwise>
        </xsl:choose>
        <xsl:apply-templates select="." mode="reading"/>
        <xsl:value-of select="$lineEnd"/>
    </xsl:template>

    <!-- What a number means in the usual unit, if it can be in that: no negative one, none beyond eleven days or
         100 Mbit/s. -->
    <xsl:template match="FileLength[. &gt; 0 and . &lt; 1000000000]" mode="reading">
        <xsl:variable name="hours" select="floor(. div 3600000)"/>
        <xsl:variable name="minutes" select="floor(. div 60000) mod 60"/>
        <xsl:value-of select="' ('"/>
        <xsl:choose>
            <xsl:when test="$hours &gt; 0">
                <xsl:value-of select="concat($hours, ':', format-number($minutes, '00'))"/>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="$minutes"/>
            </xsl:otherwise>
        </xsl:choose>
        <xsl:value-of select="concat(':', format-number(. mod 60000 div 1000, '00.000'), ' if milliseconds)')"/>
    </xsl:template>
    <xsl:template match="FileBitrate[. &gt; 0 and . &lt; 100000]" mode="reading">
        <xsl:text> (usually kbit/s)</xsl:text>
    </xsl:template>
    <xsl:template match="*" mode="reading"/>

    <xsl:template match="*" mode="name">
        <xsl:param name="values"/>
        <xsl:call-template name="label">
            <xsl:with-param name="text" select="@name"/>
        </xsl:call-template>
        <xsl:call-template name="escape">
            <xsl:with-param name="text" select="$values"/>
        </xsl:call-template>
        <xsl:value-of select="$lineEnd"/>
    </xsl:template>

    <!-- Writes the label and moves on to the column of the values. -->
    <xsl:template name="label">
        <xsl:param name="text"/>
        <xsl:value-of select="concat('  ', $text)"/>
        <xsl:choose>
            <xsl:when test="string-length($text) &gt; $width - 4">
                <xsl:value-of select="$newLine"/>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="substring($blanks, 1, $width - 2 - string-length($text))"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!-- Every further value or line of one stands under the first. -->
    <xsl:template name="escaped">
        <xsl:value-of select="$newLine"/>
    </xsl:template>

    <xsl:include href="parts/entries.xslt"/>
    <xsl:include href="parts/escape.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
