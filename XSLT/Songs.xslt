<?xml version="1.0" encoding="UTF-8"?>
<!--
    One row for each song, as comma-separated values (RFC 4180, UTF-8), with the same columns for all. File
    extension to set in the panel: .song.csv

    The row has no headings above it, so that the rows of many documents make one table; docs/style-sheets.md shows
    how. The columns are

        Path,Title,Artist,AlbumArtist,Album,Track,Disc,Date,Genre,Length,SampleRate,Bits,Channels,Format

    Path is the converted file with its folder, Format its extension, Length as the decoder reported it, usually
    in milliseconds. A tag is taken in any case, with or without blanks and other marks in its name, and by the
    names that are usual in other formats, of which the first in the lists below counts that the file has.
    Several values are joined by "; ". Texts are in quotes, numbers are not, and what is not known is empty.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <!-- Small letters, no marks. A key can use no variable, so it spells out the alphabet. -->
    <xsl:key name="tag" match="ConvertedFile/IDTags/*"
        use="translate(@name, 'ABCDEFGHIJKLMNOPQRSTUVWXYZ _-/.#', 'abcdefghijklmnopqrstuvwxyz')"/>

    <xsl:template match="/">
        <xsl:call-template name="quoted">
            <xsl:with-param name="text" select="string($path)"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'title tit2 inam '"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'artist tpe1 iart author '"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'albumartist tpe2 aart wmalbumartist '"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'album albumtitle talb iprd wmalbumtitle '"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'tracknumber track trackno trck trkn itrk iprt wmtracknumber '"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'discnumber disc disknumber disk discno tpos wmpartofset '"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'date year tdrc tyer icrd wmyear '"/>
        </xsl:call-template>
        <xsl:call-template name="tag">
            <xsl:with-param name="names" select="'genre tcon gnre ignr wmgenre '"/>
        </xsl:call-template>
        <xsl:for-each select="AudioMetadata/ConvertedFile">
            <xsl:apply-templates select="FileLength"/>
            <xsl:apply-templates select="AudioFormat/SamplesPerSec"/>
            <xsl:apply-templates select="AudioFormat/BitsPerSample"/>
            <xsl:apply-templates select="AudioFormat/Channels"/>
            <xsl:value-of select="','"/>
            <xsl:if test="string-length(FileNameExt) &gt; 1">
                <xsl:call-template name="quoted">
                    <xsl:with-param name="text" select="substring(FileNameExt, 2)"/>
                </xsl:call-template>
            </xsl:if>
        </xsl:for-each>
        <xsl:value-of select="$rowEnd"/>
    </xsl:template>

    <!-- Of the names, with a blank after each, the first that the file has a tag of. -->
    <xsl:template name="tag">
        <xsl:param name="names"/>
        <xsl:variable name="entries" select="key('tag', substring-before($names, ' '))"/>
        <xsl:choose>
            <xsl:when test="$entries">
                <xsl:variable name="values">
                    <xsl:call-template name="values">
                        <xsl:with-param name="entries" select="$entries"/>
                    </xsl:call-template>
                </xsl:variable>
                <xsl:value-of select="','"/>
                <xsl:call-template name="quoted">
                    <xsl:with-param name="text" select="string($values)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="$names = ''">,</xsl:when>
            <xsl:otherwise>
                <xsl:call-template name="tag">
                    <xsl:with-param name="names" select="substring-after($names, ' ')"/>
                </xsl:call-template>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!-- A number; 0 is one that is not known. -->
    <xsl:template match="*">
        <xsl:value-of select="','"/>
        <xsl:if test=". != 0">
            <xsl:value-of select="."/>
        </xsl:if>
    </xsl:template>

    <xsl:include href="parts/csv.xslt"/>
    <xsl:include href="parts/escape.xslt"/>
    <xsl:include href="parts/path.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
