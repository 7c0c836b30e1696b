<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <!--
        Applies the mode "group" to the first of those entries that have one name, and to few others: the template
        for that mode finds out by a key which is the first. Asked for each of many entries of one name, a key
        would cost as much time as their number squared. So entries are left out that have the name of another in
        the same block; what this costs grows with the block's size, hence its limit.
    -->
    <xsl:template name="groups">
        <xsl:param name="entries"/>
        <xsl:param name="file"/>
        <xsl:param name="total" select="count($entries)"/>
        <xsl:variable name="count" select="count($entries)"/>
        <xsl:variable name="half" select="floor($count div 2)"/>
        <xsl:variable name="left" select="$entries[position() &lt;= $half]"/>
        <xsl:variable name="names" select="$left[$count * $count &lt;= $total]/@name"/>
        <xsl:choose>
            <xsl:when test="$left">
                <xsl:call-template name="groups">
                    <xsl:with-param name="entries" select="$left"/>
                    <xsl:with-param name="file" select="$file"/>
                    <xsl:with-param name="total" select="$total"/>
                </xsl:call-template>
                <xsl:call-template name="groups">
                    <xsl:with-param name="entries" select="$entries[position() &gt; $half][not(@name = $names)]"/>
                    <xsl:with-param name="file" select="$file"/>
                    <xsl:with-param name="total" select="$total"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:apply-templates select="$entries" mode="group">
                    <xsl:with-param name="file" select="$file"/>
                </xsl:apply-templates>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>
</xsl:stylesheet>
