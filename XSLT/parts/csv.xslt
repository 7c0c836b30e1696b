<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:variable name="quote" select="'&quot;'"/>
    <xsl:variable name="special" select="'&quot;&#13;'"/>
    <xsl:variable name="marks" select="'&quot;&quot;'"/>
    <xsl:variable name="rowEnd" select="'&#13;&#10;'"/>

    <!-- A cell in quotes. Several values, which have a CR between them, are joined by "; ". -->
    <xsl:template name="quoted">
        <xsl:param name="text"/>
        <xsl:value-of select="$quote"/>
        <xsl:call-template name="escape">
            <xsl:with-param name="text" select="$text"/>
        </xsl:call-template>
        <xsl:value-of select="$quote"/>
    </xsl:template>

    <xsl:template name="escaped">
        <xsl:param name="char"/>
        <xsl:choose>
            <xsl:when test="$char = $quote">""</xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="'; '"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>
</xsl:stylesheet>
