<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <!--
        Writes text, with what the template "escaped" writes for each character that is in $special; then clean
        as it stands. $marks is the first of these characters, as many times as there are. Splits near the middle,
        so that the depth stays small for a long text, and only beside such a character, so that a surrogate pair
        is never cut.
    -->
    <xsl:template name="escape">
        <xsl:param name="text"/>
        <xsl:param name="clean"/>
        <xsl:variable name="mark" select="substring($special, 1, 1)"/>
        <xsl:variable name="marked" select="translate($text, $special, $marks)"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($marked, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, $mark)">
                <xsl:variable name="at" select="$half + string-length(substring-before($right, $mark)) + 1"/>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $at - 1)"/>
                </xsl:call-template>
                <xsl:call-template name="escaped">
                    <xsl:with-param name="char" select="substring($text, $at, 1)"/>
                </xsl:call-template>
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
</xsl:stylesheet>
