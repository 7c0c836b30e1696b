<?xml version="1.0" encoding="UTF-8"?>
<!-- A Markdown table of the converted file's tags. File extension to set in the panel: .md -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:template match="/">
        <xsl:value-of select="'| tag | value |&#10;|---|---|&#10;'"/>
        <xsl:apply-templates select="AudioMetadata/ConvertedFile/IDTags/*"/>
    </xsl:template>

    <!-- What ends a cell or a row becomes something that does not. -->
    <xsl:template match="IDTags/*">
        <xsl:value-of select="concat('| ', translate(@name, '|', '/'), ' | ')"/>
        <xsl:value-of select="concat(translate(., '|&#10;', '/ '), ' |&#10;')"/>
    </xsl:template>
</xsl:stylesheet>
