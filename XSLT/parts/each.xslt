<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <!--
        Calls the template "value" with each of the values in text, which has a CR between them, and with its
        number, which begins at 1. Splits near the middle, so that the depth stays small; tail follows text
        and has no CR.
    -->
    <xsl:template name="each">
        <xsl:param name="text"/>
        <xsl:param name="tail"/>
        <xsl:param name="index" select="1"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($text, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, '&#13;')">
                <xsl:variable name="left"
                    select="concat(substring($text, 1, $half), substring-before($right, '&#13;'))"/>
                <xsl:call-template name="each">
                    <xsl:with-param name="text" select="$left"/>
                    <xsl:with-param name="index" select="$index"/>
                </xsl:call-template>
                <xsl:call-template name="each">
                    <xsl:with-param name="text" select="substring-after($right, '&#13;')"/>
                    <xsl:with-param name="tail" select="$tail"/>
                    <xsl:with-param name="index" select="$index + 1 + string-length($left)
                        - string-length(translate($left, '&#13;', ''))"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($text, '&#13;')">
                <xsl:call-template name="each">
                    <xsl:with-param name="text" select="substring($text, 1, $half)"/>
                    <xsl:with-param name="tail" select="concat($right, $tail)"/>
                    <xsl:with-param name="index" select="$index"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:call-template name="value">
                    <xsl:with-param name="text" select="concat($text, $tail)"/>
                    <xsl:with-param name="index" select="$index"/>
                </xsl:call-template>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>
</xsl:stylesheet>
